// Loaded into the real, unchanged program by the toolkit (QT_QPA_GENERIC_PLUGINS=uidriver), it works the window
// as an operator would. UPDATER_UI_TASK names what to do:
//   road           the whole road of an update; needs UPDATER_UI_SHOTS, the folder for the screenshots
//   update         takes new.zip, tells on standard output which modules are offered, and updates them
//   take           takes new.zip, tells the new versions of all modules on stdout, and closes the window; a box is not
//                  answered
//   script         the lines of the file UPDATER_UI_SCRIPT (see UiScript.h); needs UPDATER_UI_SHOTS
//   close-search, close-reading, close-dialog, close-update, close-box   closes the window in the middle of that
// UPDATER_UI_PATIENCE: how many seconds to wait for one step, where programs are slow.
// Where the toolkit cannot read the screen, UPDATER_UI_CAMERA names a program that writes it into a given file.

#include "UiDriver.h"
#include "UiScript.h"

#include <QAbstractButton>
#include <QApplication>
#include <QEventLoop>
#include <QGenericPlugin>
#include <QMessageBox>
#include <QProcess>
#include <QProgressBar>
#include <QScreen>
#include <QTableWidget>
#include <QWindow>

#include <chrono>
#include <cstdio>

using namespace std::chrono_literals;

namespace {

constexpr char Question[] = "Все модули успешно обновлены!\nПрибор необходимо перезагрузить";

QString Text(const QString& objectName)
{
    const QWidget* widget = UiDriver::Find(objectName);
    return widget ? widget->property("text").toString() : QString();
}

bool IsEnabled(const QString& objectName)
{
    const QWidget* widget = UiDriver::Find(objectName);
    return widget && widget->isEnabled();
}

/// A dialog is on the screen, not only asked for.
bool ModalIsShown()
{
    const QWidget* modal = UiDriver::OpenDialog();
    return modal && modal->windowHandle() && modal->windowHandle()->isExposed();
}

QString Cell(int row, int column)
{
    const auto* table = qobject_cast<QTableWidget*>(UiDriver::Find("tableWidget"));
    const QTableWidgetItem* item = table ? table->item(row, column) : nullptr;
    return item ? item->text() : QString();
}

bool IsMarked(int row)
{
    const auto* table = qobject_cast<QTableWidget*>(UiDriver::Find("tableWidget"));
    const QWidget* cell = table ? table->cellWidget(row, 4) : nullptr;
    const auto* button = cell ? cell->findChild<QAbstractButton*>() : nullptr;
    return button && button->isEnabled() && !button->isChecked();
}

class Operator : public UiDriver
{
public:
    Operator()
    {
        setParent(qApp);
        const QString task = qEnvironmentVariable("UPDATER_UI_TASK");
        if (task == "road")
            WorkTheRoad();
        else if (task == "script")
            FollowTheScript();
        else if (task == "update")
            UpdateWhatIsOffered();
        else if (task == "take")
            TakeAnArchive();
        else
            CloseInTheMiddle(task);
        connect(this, &UiDriver::Finished, this, [this](bool all) {
            if (all)
                return;
            Shot("gave-up");
            std::fprintf(stderr, "uidriver: gave up waiting: %s\n", qPrintable(Failure));
            std::_Exit(4);
        });
        connect(qApp, &QCoreApplication::aboutToQuit, this, &Operator::CheckTheEnd);
        const std::chrono::seconds patience(qEnvironmentVariableIntValue("UPDATER_UI_PATIENCE"));
        Start(patience > 0s ? patience : task.startsWith("close-") ? 12s : 60s);
    }

private:
    /// The program must not end before the operator has seen what he waits for; that a box has gone he need not see.
    void CheckTheEnd()
    {
        if (Next().isEmpty() || Next() == BoxIsGone)
            return;
        std::fprintf(stderr, "uidriver: the program ended before: %s\n", qPrintable(Next()));
        std::_Exit(4);
    }

    void Shot(const QString& name) { Save(QString("%1-%2").arg(++m_shots, 2, 10, QChar('0')).arg(name)); }

    /// A shot of what the window shows now, also where it has not been painted yet.
    void Picture(const QString& name)
    {
        for (QWidget* window : QApplication::topLevelWidgets()) {
            if (window->isVisible())
                window->repaint();
        }
        Save(name);
    }

    void Save(const QString& name)
    {
        const QString folder = qEnvironmentVariable("UPDATER_UI_SHOTS");
        if (folder.isEmpty())
            return;
        const QString file = QString("%1/%2.png").arg(folder, name);
        const QString camera = qEnvironmentVariable("UPDATER_UI_CAMERA");
        if (camera.isEmpty() ? !QGuiApplication::primaryScreen()->grabWindow(0).save(file)
                             : !Photograph(camera, file)) {
            std::fprintf(stderr, "uidriver: cannot write %s\n", qPrintable(file));
            std::_Exit(4);
        }
    }

    /// Lets the window system go on meanwhile: it may have yet to show what was painted.
    bool Photograph(const QString& camera, const QString& file)
    {
        QProcess process;
        QEventLoop loop;
        connect(&process, &QProcess::finished, &loop, &QEventLoop::quit);
        connect(&process, &QProcess::errorOccurred, &loop, &QEventLoop::quit);
        Stop();
        process.start(camera, {file});
        loop.exec(QEventLoop::ExcludeUserInputEvents);
        GoOn();
        return process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
    }

    void Tell(const QString& what, const QString& shot)
    {
        std::printf("  %s\n", qPrintable(what));
        std::fflush(stdout);
        Picture(QString("%1-%2").arg(++m_shots, 2, 10, QChar('0')).arg(shot));
    }

    void See(const QString& what, const QString& shot, Condition when)
    {
        Step(what, std::move(when), [=, this] { Tell(what, shot); });
    }

    void WorkTheRoad()
    {
        qApp->installEventFilter(this);
        See("the instrument is found, its versions are read", "versions", [] {
            return Text("button_DeviceType") == "Прибор Демо-200  № 000123" && Cell(4, 1) == "1.0"
                   && Text("label_Update").isEmpty();
        });
        Press("buttonArchive");
        See("the archive dialog is open", "dialog", ModalIsShown);
        ChooseFile("Открыть архив с прошивками", "demo-200.zip");
        See("the archive is taken: new versions, marked modules", "archive", [] {
            return Cell(0, 2) == "1.5" && Cell(1, 2) == "2.1" && Cell(2, 2) == "1.2" && Cell(4, 2) == "2.0"
                   && IsReachable(Find("tableWidget"));
        });
        Press("buttonUpdate");
        See("an image is being written", "writing", [] {
            const auto* bar = qobject_cast<QProgressBar*>(UiDriver::Find("progressBar"));
            return bar && bar->value() > bar->maximum() / 3;
        });
        See("a written module restarts", "restart",
            [] { return Text("label_Update").endsWith("Ожидание перезагрузки..."); });
        See("every module is updated", "question",
            [] { return ModalIsShown() && OpenBox() && OpenBox()->text() == Question; });
        AnswerBox(Question, "Да");
        See("the versions read back are the new ones", "updated", [] {
            return Cell(0, 1) == "1.5" && Cell(1, 1) == "2.1" && Cell(2, 1) == "1.2" && Cell(4, 1) == "2.0"
                   && Cell(3, 1) == "1.0" && !OpenDialog();
        });
        Press("buttonClose");
    }

    void FollowTheScript()
    {
        const QString file = qEnvironmentVariable("UPDATER_UI_SCRIPT");
        const QString mistake = AddScript(*this, file, [this](const QString& name) { Picture(name); });
        if (mistake.isEmpty())
            return;
        std::fprintf(stderr, "uidriver: %s: %s\n", qPrintable(file), qPrintable(mistake));
        std::_Exit(4);
    }

    void UpdateWhatIsOffered()
    {
        Step("versions", [] { return !Cell(1, 1).isEmpty() && Text("label_Update").isEmpty(); });
        Press("buttonArchive");
        ChooseFile("Открыть архив с прошивками", "new.zip");
        Step(
            "the archive is taken", [] { return !Cell(1, 2).isEmpty() && IsReachable(Find("tableWidget")); },
            [this] {
                std::printf("offered:");
                for (int row = 0; row < 2; ++row)
                    std::printf("%s", qPrintable(IsMarked(row) ? " " + Cell(row, 0) : QString()));
                std::printf("\n");
                if (IsEnabled("buttonUpdate")) {
                    Press("buttonUpdate");
                    AnswerBox("Все модули успешно обновлены!\nПрибор необходимо перезагрузить", "Нет");
                }
                Press("buttonClose");
            });
    }

    void TakeAnArchive()
    {
        const auto* table = qobject_cast<QTableWidget*>(Find("tableWidget"));
        const auto versions = [=] {
            QStringList texts;
            for (int row = 0; row < table->rowCount(); ++row)
                texts.append(Cell(row, 2));
            return texts;
        };
        Step("versions", [] { return !Cell(0, 1).isEmpty() && Text("label_Update").isEmpty(); });
        Press("buttonArchive");
        ChooseFile("Открыть архив с прошивками", "new.zip");
        Step(
            "every module has a new version",
            [=] { return !versions().contains(QString()) && !OpenDialog() && IsReachable(table); },
            [=] { std::printf("%s\n", qPrintable(versions().join(' '))); });
        Press("buttonClose");
    }

    void CloseInTheMiddle(const QString& task)
    {
        const auto close = [] { UiDriver::Find("MainWindowClass")->close(); };
        if (task == "close-search")
            Step(
                "search", [] { return Text("button_DeviceType") == "Поиск прибора..."; }, close);
        if (task == "close-reading")
            Step(
                "reading", [] { return Text("label_Update") == "Считываю версии модулей..."; }, close);
        if (task == "close-search" || task == "close-reading")
            return;
        Step("versions", [] { return !Cell(0, 1).isEmpty() && Text("label_Update").isEmpty(); });
        Press("buttonArchive");
        if (task == "close-dialog")
            return Step("dialog", ModalIsShown, close);
        ChooseFile("Открыть архив с прошивками", "new.zip");
        Press("buttonUpdate");
        const bool inTheBox = task == "close-box";
        Step(
            "update",
            [=] { return inTheBox ? ModalIsShown() && OpenBox() : Text("label_Update").endsWith(". Обновление..."); },
            close);
        AnswerBox(inTheBox ? Question : "Произошла ошибка обновления!", inTheBox ? "Нет" : "OK");
    }

    /// The search and the wait pop-up last a few milliseconds: they are caught as they appear.
    bool eventFilter(QObject* object, QEvent* event) override
    {
        if (!m_searchSeen && Text("button_DeviceType") == "Поиск прибора..." && IsEnabled("buttonClose")
            && !IsEnabled("buttonArchive")) {
            m_searchSeen = true;
            Tell("the window searches for an instrument", "search");
        }
        auto* window = qobject_cast<QWindow*>(object);
        if (!window || m_popupSeen || event->type() != QEvent::Expose || window->type() != Qt::ToolTip
            || window->modality() != Qt::ApplicationModal)
            return false;
        m_popupSeen = true;
        QCoreApplication::sendEvent(object, event);
        Tell("the archive is being analysed", "analysis");
        return true;
    }

    int m_shots = 0;
    bool m_searchSeen = false;
    bool m_popupSeen = false;
};

} // namespace

class UiDriverPlugin : public QGenericPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QGenericPluginFactoryInterface_iid FILE "uidriver.json")

public:
    QObject* create(const QString&, const QString&) override
    {
        // The application object is still being made.
        QTimer::singleShot(0, qApp, [] { new Operator; });
        return new QObject(this);
    }
};

#include "UiDriverPlugin.moc"
