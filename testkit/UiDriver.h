#pragma once

#include <QObject>
#include <QTimer>

#include <chrono>
#include <functional>

class QAbstractButton;
class QDialog;
class QMessageBox;
class QWidget;

/// Works a window as an operator would: waits until it sees something, then presses, one step after the other,
/// also while the program is in the middle of a long loop or of a modal box. Presses go through the window
/// system, so a window behind a modal one does not get them.
class UiDriver : public QObject
{
    Q_OBJECT

public:
    using Condition = std::function<bool()>;
    using Action = std::function<void()>;

    /// The last step of AnswerBox.
    static constexpr char BoxIsGone[] = "the box is gone";

    /// Far above what any step takes: only a program that hangs comes to it.
    static constexpr std::chrono::milliseconds GivesUp = std::chrono::minutes(1);

    UiDriver();

    /// `then` happens once, as soon as `when` holds.
    void Step(const QString& name, Condition when, Action then = {});
    /// The same, looked for at every event too: also what lasts for a few milliseconds is seen.
    void Catch(const QString& name, Condition when, Action then = {});
    /// Does it as soon as the step before is done.
    void Do(Action action)
    {
        Step(
            "go on", [] { return true; }, std::move(action));
    }
    /// Presses the visible button once it is enabled and nothing modal blocks its window.
    void Press(const QString& objectName);
    /// Waits for the box with this text and presses its button with that text.
    void AnswerBox(const QString& text, const QString& buttonText);
    /// Picks the file in the dialog with this title, as a finger would, and presses "Открыть".
    /// `picked` happens between the two.
    void ChooseFile(const QString& title, const QString& fileName, Action picked = {});
    /// Opens the folder in the dialog with this title by pressing it twice.
    void EnterFolder(const QString& title, const QString& name);

    /// Does the steps from the running event loop; Finished tells the end.
    void Start(std::chrono::milliseconds stepLimit = GivesUp);
    /// Does the steps now; true when all were done. `Failure` names the step that was not.
    bool Run(std::chrono::milliseconds stepLimit = GivesUp);
    QString Failure;
    /// Name of the step that is waited for; empty when all are done.
    QString Next() const { return m_steps.isEmpty() ? QString() : m_steps.first().name; }

    /// A window was painted and handed to the window system. Only for a driver that has steps to catch.
    bool HasPainted() const { return m_hasPainted; }

    /// The visible widget with this object name; null when there is none.
    static QWidget* Find(const QString& objectName);
    /// The dialog or box that takes the input now; null when it is the main window (modal itself) or the
    /// pop-up.
    static QDialog* OpenDialog();
    static QMessageBox* OpenBox();
    /// Nothing modal keeps a press from this widget's window.
    static bool IsReachable(const QWidget* widget);
    static void PressNow(QWidget* widget);
    static void PressNow(QWidget* widget, const QPoint& at);

signals:
    void Done(const QString& step);
    void Finished(bool all);

protected:
    /// While stopped, no step is done and no limit counts down.
    void Stop() { m_timer.stop(); }
    void GoOn() { Start(m_limit); }

private:
    bool eventFilter(QObject* object, QEvent* event) override;
    void Look();
    void LookAtAnEvent();

    struct Entry
    {
        QString name;
        Condition when;
        Action then;
        bool atEvents = false;
    };
    QList<Entry> m_steps;
    QTimer m_timer;
    bool m_hasPainted = false;
    bool m_paintingSeen = false;
    bool m_isActing = false;
    bool m_isDelivering = false;
    std::chrono::milliseconds m_limit{};
    std::chrono::steady_clock::time_point m_since;
};
