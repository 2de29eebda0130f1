#pragma once

#include <QString>

/// One thing that would go wrong on the panel.
struct Finding
{
    QString kind;   ///< stable name for scripts, such as "wrong-type"
    QString file;   ///< as the user named it
    QString place;  ///< inside the file, such as "14:9: Devices[0].Boards[2].Port"; empty for the file as a whole
    QString effect; ///< what happens on the panel
    QString remedy;
};
