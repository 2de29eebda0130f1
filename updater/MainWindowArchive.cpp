#include "MainWindow.h"

#include "AppState.h"
#include "ArchiveAssignment.h"
#include "FingerUse.h"
#include "FirmwareArchive.h"
#include "MessageBoxes.h"
#include "TimeLimits.h"
#include "Util.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QSysInfo>
#include <QUrl>
#include <QWindow>

namespace {

void Show(const Alert& alert)
{
    ShowAlert(nullptr, alert.title, alert.text, "OK");
}

} // namespace

void MainWindow::Archive()
{
    QString path;
    if (!SelectFile(path, "Открыть архив с прошивками", "*.zip", false))
        return;
    // The window was closed meanwhile: a pop-up shown now would keep the program from ending.
    if (g_stopRequested)
        return;
    const QPointer<QWidget> popup(ShowWaitPopup("Идет анализ архива. Пожалуйста подождите..."));
    if (!popup)
        return;
    const FirmwareArchive archive(path);
    const QString folder = ExtractionFolder();
    // Kept as it always was: for an archive whose path contains "firmware" the folder is not made here. If it is not
    // there, nothing can be extracted and the pop-up stays.
    if (!path.contains("firmware"))
        QDir().mkdir(folder);
    // Deliberate: the pop-up stays open. It is the only sign that the archive cannot be unpacked.
    if (!archive.ExtractAll(folder))
        return;
    TakeEntries(folder, archive);
    UpdateUpdateButton();
    // Presses made during the analysis are discarded here, while the pop-up still blocks the window.
    QCoreApplication::processEvents();
    if (popup)
        popup->close();
}

void MainWindow::TakeEntries(const QString& folder, const FirmwareArchive& archive)
{
    // Alerts run an event loop, and so does VersionFromFileName when it shows one. Before each step, and after it, the
    // rows must still be those of the device that the steps are for: a file must never reach a board of another.
    const auto isTableOfDevice = [this, reading = m_rowsBuiltBy] {
        return reading == m_rowsBuiltBy && m_tableDevice == g_selectedDevice;
    };
    DigestCache digests;
    for (int row = 0; isTableOfDevice() && row < ui.tableWidget->rowCount(); ++row) {
        for (const ArchiveStep& step : AssignEntries(archive.Entries(), folder, Device(), row, digests)) {
            if (!isTableOfDevice())
                return;
            if (step.alert) {
                Show(*step.alert);
                continue;
            }
            const QString path = folder + "/" + step.entry;
            const QString version = VersionFromFileName(folder, step.entry, Board(row).IsProgram());
            if (isTableOfDevice())
                TakeFile(row, version, path, digests[path].sha256);
        }
    }
}

void MainWindow::TakeFile(int row, const QString& version, const QString& path, const QByteArray& sha256)
{
    if (QTableWidgetItem* item = ui.tableWidget->item(row, ColumnNew)) {
        item->setText(version);
        item->setData(Qt::UserRole, path);
        item->setData(DigestRole, sha256);
    }
    // Taken during a reading: the reading must then mark the row by its versions, not as it was before.
    m_previousVerdicts.at(row).reset();
    ui.buttonUpdate->setEnabled(true);
    CheckRow(row);
}

void MainWindow::RowButtonClicked(QPushButton* button, int row, ButtonKind kind)
{
    if (kind == ButtonKind::Mark) {
        SetMark(*button, !button->isChecked());
        UpdateUpdateButton();
        return;
    }
    const int reading = m_rowsBuiltBy;
    bool isProgram = false;
    const QString pattern = GetFilePattern(row, &isProgram);
    QString path;
    DigestCache digests;
    if (!SelectFile(path, "Открыть файл с прошивкой", pattern, true) || !CheckCertificate(path, digests))
        return;
    const QString version = VersionFromFileName(QFileInfo(path).absolutePath(), QFileInfo(path).fileName(), isProgram);
    if (reading != m_rowsBuiltBy)
        return;
    TakeFile(row, version, path, digests[path].sha256);
    UpdateUpdateButton();
}

QWidget* MainWindow::MakeRowButton(int row, ButtonKind kind, const QIcon& icon)
{
    auto* cell = new QWidget;
    auto* layout = new QHBoxLayout(cell);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setAlignment(Qt::AlignCenter);
    auto* button = new QPushButton(icon, QString());
    button->setFixedSize(36, 32);
    button->setIconSize(RowIconSize);
    button->setEnabled(false);
    if (kind == ButtonKind::Mark) {
        button->setCheckable(true);
        SetMark(*button, false);
    }
    layout->addWidget(button);
    connect(button, &QPushButton::clicked, this, [=, this] { RowButtonClicked(button, row, kind); });
    return cell;
}

bool MainWindow::CheckCertificate(const QString& path, DigestCache& digests)
{
    const CertificateCheck check = CheckFile(path, digests);
    for (const Alert& alert : check.alerts)
        Show(alert);
    return check.isValid;
}

QString MainWindow::VersionFromFileName(const QString& folder, const QString& name, bool isProgram)
{
    return isProgram ? Util::GetVersion(this, folder, name, false) : VersionInName(name);
}

bool MainWindow::SelectFile(QString& path, const QString& title, const QString& filter, bool inFirmwareFolder)
{
    QFileDialog dialog(this, title);
    dialog.setNameFilter(filter);
    dialog.setFont(QFont("Liberation Sans", 13));
    dialog.setViewMode(QFileDialog::List);
    dialog.setLabelText(QFileDialog::LookIn, "Путь");
    dialog.setLabelText(QFileDialog::FileName, "Имя файла");
    dialog.setLabelText(QFileDialog::FileType, "Тип файла");
    dialog.setLabelText(QFileDialog::Accept, "Открыть");
    dialog.setLabelText(QFileDialog::Reject, "Отмена");
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    dialog.setOption(QFileDialog::DontUseNativeDialog);
    const QString start =
        StartFolder(QCoreApplication::applicationDirPath(), inFirmwareFolder, QSysInfo::machineHostName(), "/media");
    dialog.setSidebarUrls({QUrl::fromLocalFile(start)});
    dialog.setDirectory(start);
    FitForFinger(dialog);
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return false;
    path = dialog.selectedFiles().first();
    return true;
}

QWidget* MainWindow::ShowWaitPopup(const QString& text)
{
    auto* popup = new QWidget(this, Qt::ToolTip | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint);
    popup->setAttribute(Qt::WA_DeleteOnClose);
    popup->setWindowModality(Qt::ApplicationModal);
    const QPoint centre = geometry().center();
    popup->setGeometry(centre.x() - 200, centre.y() - 30, 400, 60);
    auto* layout = new QVBoxLayout(popup);
    // As wide as the frame: the text with its padding needs the rest.
    layout->setContentsMargins(3, 3, 3, 3);
    layout->setAlignment(Qt::AlignCenter);
    auto* label = new QLabel(text);
    label->setFont(font());
    layout->addWidget(label);
    popup->setStyleSheet("QWidget {  background-color: palette(window);  border: 3px solid palette(mid);}"
                         "QLabel {  border: none;  padding: 10px;}");
    popup->show();
    // When the main window is closed now, quitting closes the pop-up too, which deletes it.
    const QPointer<QWidget> shown(popup);
    const auto isOpen = [&] { return shown && shown->isVisible(); };
    QCoreApplication::processEvents();
    // Until the window system exposes the pop-up nothing is painted, and the analysis would leave it blank.
    const QDeadlineTimer deadline(g_timeLimits.popupExposure);
    while (isOpen() && !shown->windowHandle()->isExposed() && !deadline.hasExpired())
        QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
    return isOpen() ? popup : nullptr;
}
