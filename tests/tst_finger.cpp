// The window and its file dialog under a finger: touch events as the window system sends them, and a mouse beside them.

#include "DialogTexts.h"
#include "Table.h"
#include "WindowFixture.h"

#include <QAbstractButton>
#include <QFileDialog>
#include <QListView>
#include <QPushButton>
#include <QScreen>
#include <QScrollBar>
#include <QStyleHints>
#include <QTableWidget>
#include <QTest>
#include <QTimer>

#include <functional>
#include <memory>

class TestFinger : public QObject
{
    Q_OBJECT

    using Gesture = std::function<void(QWidget* viewport, const QPoint& at)>;

    /// Qt counts touch points whose id is 0 as one press that goes on.
    static constexpr int Finger = 1;
    std::unique_ptr<QPointingDevice> m_screen{QTest::createTouchDevice()};

    void Touch(QWidget* viewport, const QPoint& from, const QPoint& to, int hold = 0)
    {
        QWidget* window = viewport->window();
        const QPoint start = viewport->mapTo(window, from);
        QTest::touchEvent(window, m_screen.get()).press(Finger, start, window);
        QTest::qWait(hold);
        constexpr int Steps = 10;
        for (int step = 1; from != to && step <= Steps; ++step) {
            QTest::qWait(10);
            QTest::touchEvent(window, m_screen.get()).move(Finger, start + (to - from) * step / Steps, window);
        }
        QTest::touchEvent(window, m_screen.get()).release(Finger, viewport->mapTo(window, to), window);
    }
    Gesture Tap(int hold = 30)
    {
        return [=, this](QWidget* viewport, const QPoint& at) { Touch(viewport, at, at, hold); };
    }
    Gesture Drag()
    {
        return [this](QWidget* viewport, const QPoint& at) { Touch(viewport, at, at - QPoint(0, 90)); };
    }
    static Gesture Click()
    {
        return [](QWidget* viewport, const QPoint& at) {
            UiDriver::PressNow(viewport, at);
            QCoreApplication::processEvents();
        };
    }
    static Gesture Twice(const Gesture& once)
    {
        return [=](QWidget* viewport, const QPoint& at) {
            once(viewport, at);
            QTest::qWait(50);
            once(viewport, at);
        };
    }

    /// Calls `use` in the dialog that the archive button opens, then closes the dialog.
    static void InDialog(WindowFixture& fixture, const std::function<void(QFileDialog& dialog, QListView& list)>& use)
    {
        QVERIFY(QDir().mkpath(WindowFixture::Path("a-folder")));
        for (int i = 0; i < 40; ++i)
            testdata::WriteFile(WindowFixture::Path(QString("file-%1.zip").arg(i)), "");
        QTimer::singleShot(0, fixture.window.get(), [&] {
            const std::unique_ptr<QFileDialog, void (*)(QFileDialog*)> dialog(
                qobject_cast<QFileDialog*>(UiDriver::OpenDialog()), [](QFileDialog* open) { open->reject(); });
            auto* list = dialog->findChild<QListView*>("listView");
            QTRY_VERIFY(list->model()->rowCount(list->rootIndex()) > 40);
            QTRY_VERIFY(list->verticalScrollBar()->maximum() > 0);
            use(*dialog, *list);
        });
        fixture.window->Archive();
        for (int i = 0; i < 40; ++i)
            QFile::remove(WindowFixture::Path(QString("file-%1.zip").arg(i)));
        QDir().rmdir(WindowFixture::Path("a-folder"));
    }

private slots:
    // The next tap must not be the second one of a double tap that began in the row before.
    void init() { QTest::qWait(QGuiApplication::styleHints()->mouseDoubleClickInterval()); }

    void DialogIsLarge()
    {
        WindowFixture fixture;
        fixture.window = std::make_unique<MainWindow>(nullptr);
        InDialog(fixture, [](QFileDialog& dialog, QListView& list) {
            QCOMPARE(dialog.frameGeometry(), dialog.screen()->availableGeometry());
            for (const char* name : {"listView", "sidebar"}) {
                const auto* view = dialog.findChild<QListView*>(name);
                const QRect row = view->visualRect(view->indexAt({5, 5}));
                QVERIFY2(row.height() >= 40 && row.width() >= view->viewport()->width(), name);
            }
            for (const auto* button : dialog.findChildren<QAbstractButton*>())
                QVERIFY2(!button->isVisible() || button->height() >= 40, qPrintable(button->objectName()));
            QVERIFY(list.verticalScrollMode() == QListView::ScrollPerPixel);
        });
    }

    void Dialog_data()
    {
        const ::Table<Gesture, int, QString> row("gesture", "row", "outcome");
        row("tap", Tap(), 2, "file-1.zip");
        row("long tap", Tap(400), 2, "file-1.zip");
        row("tap on a folder", Tap(), 0, "a-folder");
        row("double tap on a folder", Twice(Tap()), 0, "entered");
        row("double click on a folder", Twice(Click()), 0, "entered");
        row("drag", Drag(), 4, "scrolled");
    }
    void Dialog()
    {
        QFETCH(Gesture, gesture);
        QFETCH(int, row);
        QFETCH(QString, outcome);
        DialogTexts texts;
        QCoreApplication::installTranslator(&texts);
        WindowFixture fixture;
        fixture.window = std::make_unique<MainWindow>(nullptr);
        InDialog(fixture, [=](QFileDialog& dialog, QListView& list) {
            const QString folder = dialog.directory().path();
            const auto seen = [&]() -> QString {
                if (dialog.directory().path() != folder)
                    return "entered";
                const QModelIndexList selected = list.selectionModel()->selectedRows();
                if (!selected.isEmpty())
                    return selected.first().data().toString();
                return list.verticalScrollBar()->value() > 0 ? "scrolled" : "nothing";
            };
            gesture(list.viewport(), list.visualRect(list.model()->index(row, 0, list.rootIndex())).center());
            QTRY_COMPARE(seen(), outcome);
            for (const auto* button : dialog.findChildren<QPushButton*>())
                QVERIFY2(QStringList({"Открыть", "Отмена"}).contains(button->text()), qPrintable(button->text()));
        });
    }

    void Table_data()
    {
        const ::Table<Gesture, int, bool> row("gesture", "presses", "scrolls");
        row("tap", Tap(), 1, false);
        row("two taps", Twice(Tap()), 2, false);
        row("click", Click(), 1, false);
        row("drag", Drag(), 0, true);
    }
    void Table()
    {
        WindowFixture fixture;
        testdata::WriteFile(WindowFixture::Path("viewer.ver"), "1.0");
        fixture.Open({testdata::Device("П", 7, QList<TBoardRecord>(10, testdata::Program("Три", "viewer", "viewer")))});
        QVERIFY2(fixture.driver.Run(), qPrintable(fixture.driver.Failure));
        // Inside the screen of the offscreen platform: Qt looks there for what a held press belongs to.
        fixture.window->setGeometry(0, 0, 780, 400);
        QTest::qWait(50);
        auto* table = fixture.window->findChild<QTableWidget*>();
        QPushButton* button = fixture.window->GetButton(3, MainWindow::ColumnMark);
        button->setEnabled(true);
        int presses = 0;
        connect(button, &QPushButton::clicked, this, [&] { ++presses; });
        QFETCH(Gesture, gesture);
        gesture(table->viewport(), button->mapTo(table->viewport(), button->rect().center()));
        QTest::qWait(50);
        QTEST(presses, "presses");
        QTEST(table->verticalScrollBar()->value() > 0, "scrolls");
    }
};

QTEST_MAIN(TestFinger)
#include "tst_finger.moc"
