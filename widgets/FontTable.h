#pragma once

#include <QFont>

// The program's four fonts, built once: 0 = Arial 7 pt, 1 = 8 pt, 2 = 9 pt,
// 3 = 11 pt. A lookup returns a copy (bold on request); an unknown key throws
// std::out_of_range with "invalid map<K, T> key".
namespace FontTable {
QFont font(int key, bool bold = false);
}
