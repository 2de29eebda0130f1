#include "JudgementText.h"

#include "Report.h"

#include <QJsonArray>

namespace {

Words Verdict(const std::optional<Certificate>& certificate)
{
    if (!certificate)
        return {};
    switch (*certificate) {
    case Certificate::Missing:
        return {"missing", "нет"};
    case Certificate::Different:
        return {"different", "другой"};
    case Certificate::Matches:
        return {"matches", "верен"};
    }
    return {};
}

QString TableOf(const DeviceReport& device)
{
    QList<QStringList> rows{{Say({"MODULE", "МОДУЛЬ"}), Say({"FILE", "ФАЙЛ"}), Say({"NEW VERSION", "НОВАЯ ВЕРСИЯ"}),
                             Say({"CERTIFICATE", "СЕРТИФИКАТ"})}};
    for (const ModuleReport& module : device.modules)
        rows.append({module.name, module.entry.isEmpty() ? "-" : module.entry,
                     module.version.isEmpty() ? "-" : module.version, Say(Verdict(module.certificate))});
    return TableOf(rows);
}

QString BoxesOf(const DeviceReport& device)
{
    if (device.boxes.isEmpty())
        return Say({"The operator sees no box.\n", "Оператор не увидит ни одного окна.\n"});
    QString text = Say({"Boxes that the operator sees:\n", "Окна, которые увидит оператор:\n"});
    for (const BoxReport& box : device.boxes)
        text += QString("  %1 x  [%2] %3\n").arg(QString::number(box.times), box.box.title, Printable(box.box.text));
    return text;
}

QString LinesOf(const QList<Finding>& findings, const Words& heading)
{
    QString text = findings.isEmpty() ? QString() : Say(heading) + '\n';
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
                                   {"certificate", Verdict(module.certificate).en}});
    QJsonArray boxes;
    for (const BoxReport& box : device.boxes)
        boxes.append(QJsonObject{{"title", box.box.title}, {"text", box.box.text}, {"times", box.times}});
    return {{"name", device.name}, {"id", device.idDev}, {"modules", modules}, {"boxes", boxes}};
}

} // namespace

QString TextOf(const Judgement& judgement, const QString& archive)
{
    QString text;
    for (const DeviceReport& device : judgement.devices)
        text += Printable(QString("%1 -> %2 (%3)").arg(archive, device.name, QString::number(device.idDev))) + "\n\n"
                + TableOf(device) + '\n' + BoxesOf(device) + '\n';
    return text + LinesOf(judgement.findings, {"Findings:", "Найдено:"})
           + LinesOf(judgement.notes, {"Notes:", "Замечания:"});
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
