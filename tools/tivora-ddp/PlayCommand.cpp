#include "tools/tivora-ddp/Commands.h"

#include <cstdio>

int runPlay(const QStringList&)
{
    std::fputs("not implemented yet\n", stderr);
    return 2;
}
