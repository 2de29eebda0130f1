#pragma once

#include <QMessageBox>
#include <QString>

class QWidget;

/// Modal message boxes for a panel without window frames: large buttons, an own frame, plain text. Each call blocks in
/// an event loop of its own and returns what QMessageBox::exec returns: a standard button code, or 0 when the program
/// is quitting.

/// The message box that is open now, if any.
extern QMessageBox* g_currentMessageBox;

int ShowMessageBox(QMessageBox::Icon icon, const QString& title, const QString& text, const QString& buttonText);
/// A critical box with one button; `parent` is not used.
int ShowAlert(QWidget* parent, const QString& title, const QString& text, const QString& buttonText);
/// QMessageBox::Yes or QMessageBox::No (also by Escape); `parent` is not used.
int AskYesNo(QWidget* parent, const QString& title, const QString& text);
