#include "MessageBoxes.h"

#include <QIcon>
#include <QKeySequence>
#include <QPushButton>

QMessageBox* g_currentMessageBox = nullptr;

namespace {

struct BoxButton
{
    QMessageBox::StandardButton code;
    QString text;
    const char* icon;
    bool isCancel;
};

constexpr Qt::WindowFlags FirstFlags = Qt::Dialog | Qt::MSWindowsFixedSizeDialogHint;

int Run(QMessageBox& box, const QList<BoxButton>& buttons)
{
    box.setTextFormat(Qt::PlainText);
    box.setWindowModality(Qt::ApplicationModal);
    box.setWindowFlags(Qt::Dialog | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint | Qt::BypassWindowManagerHint
                       | Qt::BypassWindowManagerHint);
    // Without a window manager nothing else draws a frame.
    box.setAttribute(Qt::WA_StyledBackground, true);
    box.setStyleSheet("QMessageBox {  background-color: palette(window);  border: 3px solid palette(mid);}");
    const QFont font("Liberation Sans", 14, QFont::Bold);
    box.setFont(font);
    for (const BoxButton& look : buttons) {
        auto* button = qobject_cast<QPushButton*>(box.button(look.code));
        button->setFont(font);
        button->setText(look.text);
        button->setIcon(QIcon(look.icon));
        button->setMinimumSize(160, 64);
        button->setIconSize(QSize(48, 48));
        if (look.isCancel)
            button->setShortcut(QKeySequence(QKeySequence::Cancel));
    }
    box.activateWindow();
    box.raise();
    box.setFocus(Qt::ActiveWindowFocusReason);
    g_currentMessageBox = &box;
    const int result = box.exec();
    g_currentMessageBox = nullptr;
    return result;
}

} // namespace

int ShowMessageBox(QMessageBox::Icon icon, const QString& title, const QString& text, const QString& buttonText)
{
    QMessageBox box(icon, title, text, QMessageBox::Ok, nullptr, FirstFlags);
    return Run(box, {{QMessageBox::Ok, buttonText, ":/icons/onebit_34_ok.png", true}});
}

int ShowAlert(QWidget*, const QString& title, const QString& text, const QString& buttonText)
{
    return ShowMessageBox(QMessageBox::Critical, title, text, buttonText);
}

int AskYesNo(QWidget*, const QString& title, const QString& text)
{
    QMessageBox box(QMessageBox::Question, title, text, QMessageBox::Yes | QMessageBox::No, nullptr, FirstFlags);
    return Run(box, {{QMessageBox::Yes, "Да", ":/icons/onebit_34_ok.png", false},
                     {QMessageBox::No, "Нет", ":/icons/onebit_33_cancel.png", true}});
}
