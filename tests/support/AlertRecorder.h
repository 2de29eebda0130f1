#pragma once

#include "UiDriver.h"

#include <QAbstractButton>
#include <QMessageBox>

/// Presses the first button of every message box and keeps its text.
class AlertRecorder : public QObject
{
public:
    AlertRecorder() { startTimer(15); }
    QStringList texts;

private:
    void timerEvent(QTimerEvent*) override
    {
        QMessageBox* box = UiDriver::OpenBox();
        if (!box || box->property("read").toBool())
            return;
        texts.append(box->windowTitle() + ": " + box->text());
        box->setProperty("read", true);
        UiDriver::PressNow(box->buttons().first());
    }
};
