#include "JudgementText.h"

#include "ArchiveFindings.h"
#include "Kit.h"
#include "Report.h"

#include <QJsonArray>

#include <algorithm>

namespace {

const char* Verdict(const ModuleReport& module)
{
    return module.certificate ? VerdictOf(*module.certificate) : "";
}

QString Heading(const DeviceReport& device, const QString& archive)
{
    return Printable(QString("%1 -> %2 (%3)").arg(archive, device.name, QString::number(device.idDev)));
}

qsizetype Served(const DeviceReport& device)
{
    return std::count_if(device.modules.begin(), device.modules.end(),
                         [](const ModuleReport& module) { return module.certificate == Certificate::Matches; });
}

QString TableOf(const DeviceReport& device)
{
    QList<QStringList> rows{{Kit::tr("MODULE"), Kit::tr("FILE"), Kit::tr("NEW VERSION"), Kit::tr("CERTIFICATE")}};
    for (const ModuleReport& module : device.modules)
        rows.append({module.name, module.entry.isEmpty() ? "-" : module.entry,
                     module.version.isEmpty() ? "-" : VersionText(module.version), Kit::tr(Verdict(module))});
    return TableOf(rows);
}

QString BoxesOf(const DeviceReport& device)
{
    if (device.alerts.isEmpty())
        return Kit::tr("The operator sees no box.\n");
    QString text = Kit::tr("Boxes that the operator sees:\n");
    for (const AlertReport& alert : device.alerts)
        text += QString("  %1 x  [%2] %3\n")
                    .arg(QString::number(alert.times), alert.alert.title, Printable(alert.alert.text));
    return text;
}

QString LinesOf(const QList<Finding>& findings, const QString& heading)
{
    QString text = findings.isEmpty() ? QString() : heading + '\n';
    for (const Finding& finding : findings)
        text += "  " + LineOf(finding) + '\n';
    return text;
}

QJsonArray JsonOf(const QList<Finding>& findings)
{
    QJsonArray list;
    for (const Finding& finding : findings)
        list.append(JsonOf(finding));
    return list;
}

QJsonObject JsonOf(const DeviceReport& device)
{
    QJsonArray modules;
    for (const ModuleReport& module : device.modules)
        modules.append(QJsonObject{{"name", module.name},
                                   {"file", module.entry},
                                   {"version", module.version},
                                   {"certificate", Verdict(module)}});
    QJsonArray alerts;
    for (const AlertReport& alert : device.alerts)
        alerts.append(QJsonObject{{"title", alert.alert.title}, {"text", alert.alert.text}, {"times", alert.times}});
    return {{"name", device.name},
            {"id", device.idDev},
            {"modules", modules},
            {"served", Served(device)},
            {"boxes", alerts}};
}

} // namespace

const char* VerdictOf(Certificate certificate)
{
    switch (certificate) {
    case Certificate::Missing:
        return QT_TRANSLATE_NOOP("Kit", "missing");
    case Certificate::Different:
        return QT_TRANSLATE_NOOP("Kit", "different");
    case Certificate::Matches:
        break;
    }
    return QT_TRANSLATE_NOOP("Kit", "matches");
}

QString ServedLines(const Judgement& judgement, const QString& archive)
{
    QString text;
    for (const DeviceReport& device : judgement.devices)
        text += Heading(device, archive) + ": "
                + Kit::tr("modules served: %1 of %2.")
                      .arg(QString::number(Served(device)), QString::number(device.modules.size()))
                + '\n';
    return text;
}

QString LinesOf(const QList<Finding>& findings)
{
    QString text;
    for (const Finding& finding : findings)
        text += LineOf(finding) + '\n';
    return text;
}

QString TextOf(const Judgement& judgement, const QString& archive)
{
    QString text;
    for (const DeviceReport& device : judgement.devices)
        text += Heading(device, archive) + "\n\n" + TableOf(device) + '\n' + BoxesOf(device) + '\n';
    return text + LinesOf(judgement.findings, Kit::tr("Findings:")) + LinesOf(judgement.notes, Kit::tr("Notes:"));
}

QJsonObject JsonOf(const Judgement& judgement, const QString& archive)
{
    QJsonArray devices;
    for (const DeviceReport& device : judgement.devices)
        devices.append(JsonOf(device));
    return {{"archive", archive},
            {"devices", devices},
            {"findings", JsonOf(judgement.findings)},
            {"notes", JsonOf(judgement.notes)}};
}
