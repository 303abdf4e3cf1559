#pragma once

// The test-disc generator in one include.
#include "tools/mkddp/DiscFiles.h"
#include "tools/mkddp/DiscSpec.h"
#include "tools/mkddp/Expected.h"
#include "tools/mkddp/Fault.h"
#include "tools/mkddp/KnownSignals.h"
#include "tools/mkddp/TestPattern.h"
