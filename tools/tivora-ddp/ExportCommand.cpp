#include "tools/tivora-ddp/Commands.h"

#include <cstdio>

int runExport(const QStringList&)
{
    std::fputs("not implemented yet\n", stderr);
    return 2;
}
