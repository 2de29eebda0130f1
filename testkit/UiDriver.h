#pragma once

#include <QObject>
#include <QTimer>

#include <chrono>
#include <functional>

class QAbstractButton;
class QDialog;
class QMessageBox;
class QWidget;

/// Operates a window as an operator would, step by step: waits for a condition, then acts, also while the program is in
/// a long loop or shows a modal message box. Presses are events of the window system, so a window blocked by a modal
/// one does not receive them.
class UiDriver : public QObject
{
    Q_OBJECT

public:
    using Condition = std::function<bool()>;
    using Action = std::function<void()>;

    /// The last step of AnswerBox.
    static constexpr char BoxIsGone[] = "the message box is closed";

    /// Far longer than any step takes: only a program that hangs reaches this limit.
    static constexpr std::chrono::milliseconds GivesUp = std::chrono::minutes(1);

    UiDriver();

    /// Calls `then` once, as soon as `when` returns true.
    void Step(const QString& name, Condition when, Action then = {});
    /// The same, but checks `when` at every event too, so that it notices what lasts only a few milliseconds.
    void Catch(const QString& name, Condition when, Action then = {});
    /// Calls `action` as soon as the step before is done.
    void Do(Action action)
    {
        Step(
            "go on", [] { return true; }, std::move(action));
    }
    /// Presses the visible button once it is enabled and nothing modal blocks its window.
    void Press(const QString& objectName);
    /// Waits for the message box with `text` and presses its button with `buttonText`.
    void AnswerBox(const QString& text, const QString& buttonText);
    /// Selects the file in the dialog with this title by pressing its entry, calls `picked`, and presses "Открыть".
    void ChooseFile(const QString& title, const QString& fileName, Action picked = {});
    /// Opens the folder in the dialog with this title by pressing it twice.
    void EnterFolder(const QString& title, const QString& name);

    /// Does the steps from the running event loop; emits Finished at the end.
    void Start(std::chrono::milliseconds stepLimit = GivesUp);
    /// Does the steps now; returns whether all were done. `Failure` names the step that was not.
    bool Run(std::chrono::milliseconds stepLimit = GivesUp);
    QString Failure;
    /// Name of the current step; empty when all are done.
    QString Next() const { return m_steps.isEmpty() ? QString() : m_steps.first().name; }

    /// A window was painted and handed to the window system. Only for a driver that has steps to catch.
    bool HasPainted() const { return m_hasPainted; }

    /// The visible widget with this object name; null when there is none.
    static QWidget* Find(const QString& objectName);
    /// The dialog or message box that receives the input now; null when it is the main window (modal itself) or the
    /// pop-up.
    static QDialog* OpenDialog();
    static QMessageBox* OpenBox();
    /// No modal window blocks presses on this widget's window.
    static bool IsReachable(const QWidget* widget);
    static void PressNow(QWidget* widget);
    static void PressNow(QWidget* widget, const QPoint& at);

signals:
    void Done(const QString& step);
    void Finished(bool all);

protected:
    /// While stopped, no step is done and no time limit runs.
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
