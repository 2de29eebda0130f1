#pragma once

#include <QString>

#include <functional>

class UiDriver;

/// Adds the steps of a script to the driver. A line is a verb and its words, with " | " between them; "\n" in a word is
/// a line break, "%success" and "%failure" are the texts of the boxes at the end of an update; empty lines and lines
/// with "#" in front do not count. Rows and columns count from 0.
///
/// What an operator does:
///   press | OBJECT                    the button with this object name, once it is enabled
///   press-row | ROW | COLUMN          the button in the table's cell
///   enter | TITLE | FOLDER            opens the folder in the file dialog with this title
///   choose | TITLE | FILE             picks the file in the dialog and opens it
///   choose | TITLE | FILE | PICTURE   takes the picture between the two
///   answer | TEXT | BUTTON            presses the button of the box with this text
///   close                             closes the main window
///   quit                              ends the program, also from behind a box
///
/// What he waits for:
///   text | OBJECT | TEXT              the widget shows this text; "..." in front: until it ends so
///   cell | ROW | COLUMN | TEXT        the cell shows this text and nothing modal is in front
///   versions                          the current version of every row is there, none is being read, and nothing is in
///   front new-versions                      every row has a new version, and nothing is in front search an instrument
///   is searched for enabled | OBJECT                  the widget is enabled and nothing modal is in front dialog a
///   file dialog is on the screen box | TEXT                        a box with this text is on the screen no-dialog
///   neither a dialog nor a box is open popup                             the wait pop-up is on the screen bar |
///   PERCENT                     the progress bar is past this bar-stands                        it is past a third and
///   has not moved for 0.7 s painted                           the first window was painted and handed to the window
///   system pause | SECONDS                   so long
///
/// What is written; behind a wait it is done in the moment in which that is over:
///   picture | NAME                    the screen as NAME.png
///   show | WORDS | NAME               the words on standard output, and the screen as NAME.png with a number in front
///   say | WORDS                       the words on standard output. "%now" in them are seconds on the system's
///   monotonic
///                                     clock, "%marked" the names of the marked rows, "%new" all new versions
///   stand                             the program stands still until a line comes on standard input
///
/// Returns what is wrong with the script, with the line's number, or nothing.
QString AddScript(UiDriver& driver, const QString& path, const std::function<void(const QString&)>& picture);
