#include "jobs/ThreadPriority.h"

#include <QThread>

#ifdef Q_OS_LINUX
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>
#endif

void lowerThisThreadsPriority()
{
#ifdef Q_OS_LINUX
    setpriority(PRIO_PROCESS, static_cast<id_t>(syscall(SYS_gettid)), 10);
#else
    QThread::currentThread()->setPriority(QThread::LowPriority);
#endif
}
