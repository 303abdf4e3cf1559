#pragma once

// Lowers the calling thread's priority below the GUI's and the audio's, for
// work that reads and computes flat out: on Linux a nice value of 10 for
// this thread alone (Qt's own priorities do nothing for ordinary threads
// there), so the scheduler hands the CPU to the GUI thread's 16 ms tick and
// to the audio at once when they wake, while the work still has every cycle
// nobody else wants; elsewhere Qt's low priority. Threads it starts after
// the call inherit it on Linux.
void lowerThisThreadsPriority();
