#pragma once

#include <QString>

#include <functional>

class UiDriver;

/// Adds the steps of a script to the driver. A line is a verb and its words, separated by " | "; "\n" in a word is a
/// line break, "%success" and "%failure" are the texts of the message boxes at the end of an update, "%searching" and
/// "%reading" those of the window meanwhile; empty lines and lines that begin with "#" are ignored. Rows and columns
/// count from 0.
///
/// What an operator does:
///   press | OBJECT                    the button with this object name, once it is enabled
///   press-row | ROW | COLUMN          the button in the table's cell
///   enter | TITLE | FOLDER            opens the folder in the file dialog with this title
///   choose | TITLE | FILE             selects the file in the dialog and opens it
///   choose | TITLE | FILE | PICTURE   takes a screenshot between the two
///   answer | TEXT | BUTTON            presses the button of the message box with this text
///   close                             closes the main window
///   quit                              ends the program, also while a message box is open
///
/// What he waits for ("free": nothing modal is in front):
///   text | OBJECT | TEXT              the widget shows this text; with "..." first: a text that ends so
///   cell | ROW | COLUMN | TEXT        the cell shows this text, free
///   versions                          every row shows its current version, none is being read, free
///   new-versions                      every row has a new version, free
///   search                            the search for an instrument is running
///   enabled | OBJECT                  the widget is enabled, free
///   dialog                            a file dialog is open
///   box | TEXT                        a message box with this text is open
///   no-dialog                         no dialog or message box is open
///   popup                             the wait pop-up is on the screen
///   bar | PERCENT                     the progress bar is past this
///   bar-stands                        it is past a third and has not moved for 0.7 s
///   painted                           the first window was painted and given to the window system
///   pause | SECONDS                   this time has passed
///
/// Output:
///   picture | NAME                    a screenshot as NAME.png, a moment after the step before: what that step saw
///   begin
///                                     is then shown
/// Output at the very moment at which the wait before it ends:
///   show | WORDS | NAME               the words on standard output, and a screenshot as NAME.png after a number
///   say | WORDS                       the words on standard output; "%now" in them are seconds on the system's
///                                     monotonic clock, "%marked" the marked rows, "%new" all new versions
///   stand                             stops the program until a line arrives on standard input
///
/// Returns an error with the line's number, or an empty text.
QString AddScript(UiDriver& driver, const QString& path, const std::function<void(const QString&)>& picture);
