#pragma once

#include <QProcess>

/// A program on the screen, operated by the UI driver. All functions throw Unmeasurable.
class Watched
{
public:
    /// `steps` names a file bench-... of testkit/steps.
    Watched(const QString& program, const QString& steps, const QStringList& arguments = {});
    ~Watched();
    Q_DISABLE_COPY_MOVE(Watched)

    /// Waits for the line that begins with `word` and returns what follows.
    QString Await(const QString& word);
    /// Lets the program continue after a line that it waits at (`stand` in UiScript.h).
    void GoOn() { m_process.write("\n"); }
    /// When it was started, on the clock of Now().
    double Started() const { return m_started; }
    /// Waits for its end.
    void Finish();

    struct Memory
    {
        double resident = 0; ///< bytes, shared libraries included
        double own = 0;      ///< bytes that no other process shares
    };
    Memory Uses() const;
    /// The largest resident size since the last call of ForgetPeak, in bytes.
    double Peak() const;
    void ForgetPeak();
    const QString& Log() const { return m_log; }

private:
    QByteArray Proc(const QString& file) const;

    QProcess m_process;
    QString m_log;
    double m_started = 0;
};
