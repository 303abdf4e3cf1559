#include "widgets/FontTable.h"

#include "ddp/CheckedAccess.h"

#include <map>

namespace {

const std::map<int, QFont>& table()
{
    static const std::map<int, QFont> fonts = [] {
        std::map<int, QFont> m;
        const int points[] = {7, 8, 9, 11};
        for (int key = 0; key < 4; ++key) {
            QFont f(QStringLiteral("Arial"));
            f.setPointSize(points[key]);
            m.emplace(key, f);
        }
        return m;
    }();
    return fonts;
}

} // namespace

QFont FontTable::font(int key, bool bold)
{
    QFont f = checkedMapAt(table(), key);
    f.setBold(bold);
    return f;
}
