#pragma once

#include "Error.h"
#include "Kit.h"

/// Arguments or files that cannot be used: the text is one line that names file, place and remedy.
class UsageError : public Error
{
public:
    using Error::Error;
};
