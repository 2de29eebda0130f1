#pragma once

#include "UsageError.h"

class QCommandLineParser;

/// The program's exit status.
enum Status { Fine = 0, HasFindings = 1, IsMisused = 2 };

/// One verb of fwkit, such as "pack".
struct Verb
{
    QString name;
    QString summary;   ///< one sentence
    QString arguments; ///< the positional ones, as the usage line shows them
    /// Adds all options but --help and --json, which every verb has.
    void (*addOptions)(QCommandLineParser& parser);
    /// Returns the exit status; throws UsageError.
    Status (*run)(const QCommandLineParser& parser);
};

Verb CertifyVerb();
Verb PackVerb();
Verb VerifyVerb();
Verb CheckVerb();
Verb ListVerb();
Verb DevicesVerb();
