#pragma once

#include <QString>

#include <functional>

class UiDriver;

/// Adds the steps of a script to the driver. A line is a verb and its words, with " | " between them; "\n" in a word is
/// a line break; empty lines and lines with "#" in front do not count.
///
///   press | OBJECT                    the button with this object name
///   press-row | ROW | COLUMN          the button in the table's cell
///   enter | TITLE | FOLDER            opens the folder in the file dialog with this title
///   choose | TITLE | FILE | PICTURE   picks the file in the dialog, takes the picture, opens it
///   answer | TEXT | BUTTON            presses the button of the box with this text
///   text | OBJECT | TEXT              waits until the widget shows this text; "..." in front: until it ends so
///   cell | ROW | COLUMN | TEXT        waits until the cell shows this text and nothing modal is in front
///   box | TEXT                        waits until a box with this text is on the screen
///   popup                             waits until the wait pop-up is on the screen
///   bar-stands                        waits until the progress bar is past a third and has not moved for 0.7 s
///   picture | NAME                    hands the name to `picture`
///   quit                              ends the program, also from behind a box
///
/// Rows and columns count from 0. Returns what is wrong with the script, with the line's number, or nothing.
QString AddScript(UiDriver& driver, const QString& path, const std::function<void(const QString&)>& picture);
