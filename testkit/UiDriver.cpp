#include "UiDriver.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QFileDialog>
#include <QListView>
#include <QMessageBox>
#include <QWindow>

#include <qpa/qwindowsysteminterface.h>

#include <memory>

namespace {

constexpr auto RepeatedPress = std::chrono::seconds(1);

QFileDialog* OpenFileDialog(const QString& title)
{
    auto* open = qobject_cast<QFileDialog*>(UiDriver::OpenDialog());
    return open && open->windowTitle() == title ? open : nullptr;
}

/// The entry in the list of the dialog with this title; invalid as long as it is not there.
QModelIndex Listed(const QString& title, const QString& name)
{
    const QFileDialog* dialog = OpenFileDialog(title);
    const auto* list = dialog ? dialog->findChild<QListView*>("listView") : nullptr;
    for (int row = 0; list && row < list->model()->rowCount(list->rootIndex()); ++row) {
        const QModelIndex index = list->model()->index(row, 0, list->rootIndex());
        if (index.data().toString() == name)
            return index;
    }
    return {};
}

} // namespace

UiDriver::UiDriver()
{
    m_timer.setInterval(20);
    connect(&m_timer, &QTimer::timeout, this, &UiDriver::Look);
}

void UiDriver::Step(const QString& name, Condition when, Action then)
{
    m_steps.append({name, std::move(when), std::move(then), false});
}

void UiDriver::Catch(const QString& name, Condition when, Action then)
{
    qApp->installEventFilter(this);
    m_steps.append({name, std::move(when), std::move(then), true});
}

bool UiDriver::eventFilter(QObject* object, QEvent* event)
{
    const bool isPainting = event->type() == QEvent::Paint || event->type() == QEvent::UpdateRequest;
    if (isPainting && !m_paintingSeen && object->isWidgetType()) {
        m_paintingSeen = true;
        // The backing store goes to the window system before the event loop has control again.
        QTimer::singleShot(0, this, [this] {
            m_hasPainted = true;
            LookAtAnEvent();
        });
    }
    // A step may take a screenshot, which must not paint a window that is just being painted.
    if (isPainting || m_isDelivering)
        return false;
    // This event paints a window that appears on the screen, so check the steps after it.
    const bool exposes = event->type() == QEvent::Expose;
    if (exposes) {
        m_isDelivering = true;
        QCoreApplication::sendEvent(object, event);
        m_isDelivering = false;
    }
    LookAtAnEvent();
    return exposes;
}

void UiDriver::LookAtAnEvent()
{
    while (m_timer.isActive() && !m_isActing && !m_steps.isEmpty() && m_steps.first().atEvents
           && m_steps.first().when())
        Look();
}

void UiDriver::Press(const QString& objectName)
{
    Step(
        "press " + objectName,
        [=] {
            const QWidget* widget = Find(objectName);
            return widget && widget->isEnabled() && IsReachable(widget);
        },
        [=] { PressNow(Find(objectName)); });
}

void UiDriver::AnswerBox(const QString& text, const QString& buttonText)
{
    const auto button = [=]() -> QAbstractButton* {
        const QMessageBox* box = OpenBox();
        if (!box || box->text() != text)
            return nullptr;
        for (QAbstractButton* candidate : box->buttons()) {
            if (candidate->text() == buttonText)
                return candidate;
        }
        return nullptr;
    };
    Step(
        "answer " + buttonText + " to: " + text, [=] { return button() != nullptr; }, [=] { PressNow(button()); });
    Step(BoxIsGone, [=] { return !button(); });
}

void UiDriver::EnterFolder(const QString& title, const QString& name)
{
    const auto again = std::make_shared<QDeadlineTimer>();
    Step("enter " + name, [=] {
        const QFileDialog* dialog = OpenFileDialog(title);
        const bool inside = dialog && dialog->directory().dirName() == name;
        const QModelIndex entry = Listed(title, name);
        if (!inside && entry.isValid() && again->hasExpired()) {
            auto* list = dialog->findChild<QListView*>("listView");
            for (int press = 0; press < 2; ++press)
                PressNow(list->viewport(), list->visualRect(entry).center());
            *again = QDeadlineTimer(RepeatedPress);
        }
        return inside;
    });
}

void UiDriver::ChooseFile(const QString& title, const QString& fileName, Action picked)
{
    const auto dialog = [=] { return OpenFileDialog(title); };
    const auto listed = [=] { return Listed(title, fileName); };
    const auto again = std::make_shared<QDeadlineTimer>();
    const auto press = [=] {
        auto* list = dialog()->findChild<QListView*>("listView");
        list->scrollTo(listed());
        PressNow(list->viewport(), list->visualRect(listed()).center());
        *again = QDeadlineTimer(RepeatedPress);
    };
    Step(
        "choose " + fileName, [=] { return listed().isValid(); }, press);
    const auto accept = [=]() -> QAbstractButton* {
        for (auto* button : dialog() ? dialog()->findChildren<QAbstractButton*>() : QList<QAbstractButton*>()) {
            if (button->text() == "Открыть" && button->isEnabled() && !dialog()->selectedFiles().isEmpty()
                && dialog()->selectedFiles().first().endsWith('/' + fileName))
                return button;
        }
        return nullptr;
    };
    // The list may have changed during the press: then press once more, after the double-click interval.
    Step(
        "open " + fileName,
        [=] {
            if (!accept() && listed().isValid() && again->hasExpired())
                press();
            return accept() != nullptr;
        },
        [=] {
            if (picked)
                picked();
            PressNow(accept());
        });
    // The program may react to the file at once, with something that is visible only for a moment.
    m_steps.append({"the dialog is gone", [=] { return !dialog(); }, {}, true});
}

void UiDriver::Start(std::chrono::milliseconds stepLimit)
{
    m_limit = stepLimit;
    m_since = std::chrono::steady_clock::now();
    m_timer.start();
}

bool UiDriver::Run(std::chrono::milliseconds stepLimit)
{
    QEventLoop loop;
    bool done = false;
    connect(this, &UiDriver::Finished, &loop, [&](bool all) {
        done = all;
        loop.quit();
    });
    Start(stepLimit);
    loop.exec();
    return done;
}

void UiDriver::Look()
{
    const auto now = std::chrono::steady_clock::now();
    if (m_steps.isEmpty()) {
        m_timer.stop();
        emit Finished(true);
        return;
    }
    if (m_steps.first().when()) {
        const Entry step = m_steps.takeFirst();
        m_since = now;
        if (step.then) {
            m_isActing = true;
            step.then();
            m_isActing = false;
        }
        emit Done(step.name);
    } else if (now - m_since > m_limit) {
        Failure = m_steps.first().name;
        m_timer.stop();
        emit Finished(false);
    }
}

QWidget* UiDriver::Find(const QString& objectName)
{
    for (QWidget* widget : QApplication::allWidgets()) {
        if (widget->objectName() == objectName && widget->isVisible())
            return widget;
    }
    return nullptr;
}

QDialog* UiDriver::OpenDialog()
{
    return qobject_cast<QDialog*>(QApplication::activeModalWidget());
}

QMessageBox* UiDriver::OpenBox()
{
    return qobject_cast<QMessageBox*>(OpenDialog());
}

bool UiDriver::IsReachable(const QWidget* widget)
{
    const QWidget* modal = QApplication::activeModalWidget();
    return !modal || modal == widget->window();
}

void UiDriver::PressNow(QWidget* widget)
{
    PressNow(widget, widget->rect().center());
}

void UiDriver::PressNow(QWidget* widget, const QPoint& at)
{
    QWindow* window = widget->window()->windowHandle();
    const QPointF local = widget->mapTo(widget->window(), at);
    const QPointF global = widget->mapToGlobal(at);
    QWindowSystemInterface::handleMouseEvent(window, local, global, Qt::LeftButton, Qt::LeftButton,
                                             QEvent::MouseButtonPress);
    QWindowSystemInterface::handleMouseEvent(window, local, global, Qt::NoButton, Qt::LeftButton,
                                             QEvent::MouseButtonRelease);
}
