#include "widgets/Resources.h"

#include <QtGlobal>

// Q_INIT_RESOURCE must be used outside any namespace.
static void registerResources()
{
    Q_INIT_RESOURCE(resources);
}

void initResources()
{
    static const bool done = (registerResources(), true);
    Q_UNUSED(done)
}
