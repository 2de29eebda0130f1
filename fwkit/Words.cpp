#include "Words.h"

QString Say(const Words& words)
{
    // Asked anew each time: it is cheap, and the environment is all that decides.
    for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        if (const QString locale = qEnvironmentVariable(name); !locale.isEmpty())
            return locale.startsWith("ru") ? words.ru : words.en;
    }
    return words.en;
}
