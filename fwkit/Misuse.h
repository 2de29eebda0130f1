#pragma once

#include "Words.h"

/// Thrown for arguments or files that cannot be used: one line that names file, place and remedy.
struct Misuse
{
    Words why;
};
