#include "TimeLimits.h"

TimeLimits g_timeLimits;
