#include "UnusedFile.h"

#include "ArchiveFindings.h"
#include "Kit.h"

namespace {

struct Module
{
    const TDeviceRecord& device;
    const TBoardRecord& board;

    QString Pattern() const { return FilePattern(device, board); }
    QString Prefix() const { return NamePrefix(Pattern()); }
    /// The extension of an image, with the point.
    QString Extension() const { return Pattern().section('*', 1); }
};

QList<Module> ModulesOf(const QList<const TDeviceRecord*>& devices)
{
    QList<Module> modules;
    for (const TDeviceRecord* device : devices) {
        for (int row = 0; row < device->BoardCount; ++row)
            modules.append({*device, device->Boards.at(row)});
    }
    return modules;
}

std::optional<Unused> AboutDots(const QString& entry, const Module& module)
{
    if (!module.board.IsProgram() || entry != ProgramEntry(module.board))
        return std::nullopt;
    return Unused{"dotted-program",
                  Kit::tr("The module \"%1\" takes nothing with a \".\" in its folder or name").arg(module.board.Name),
                  Kit::tr("change Folder and File in the catalogue")};
}

/// The file name that `module` takes, when `entry` differs from it at most in upper and lower case and in spaces at its
/// ends; otherwise empty.
QString NameInRightCase(const QString& entry, const Module& module)
{
    const QString name = FileNameOf(entry).trimmed();
    if (module.board.IsProgram())
        return name.compare(module.board.File, Qt::CaseInsensitive) == 0 ? module.board.File : QString();
    const qsizetype at = name.indexOf(module.Prefix(), 0, Qt::CaseInsensitive);
    if (at < 0 || !name.endsWith(module.Extension(), Qt::CaseInsensitive))
        return {};
    const QString version = name.mid(at + module.Prefix().size()).chopped(module.Extension().size());
    return name.first(at) + module.Prefix() + version + module.Extension();
}

std::optional<Unused> AboutCase(const QString& entry, const Module& module)
{
    const QString name = NameInRightCase(entry, module);
    if (name.isEmpty() || name == FileNameOf(entry))
        return std::nullopt;
    return Unused{
        "wrong-case",
        Kit::tr("The module \"%1\" does not take it: upper and lower case and spaces count").arg(module.board.Name),
        Kit::tr("rename it to %1").arg(name)};
}

std::optional<Unused> AboutKind(const QString& entry, const Module& module)
{
    if (module.board.IsProgram() || !entry.contains(module.Prefix(), Qt::CaseInsensitive))
        return std::nullopt;
    const bool isOtherImage =
        entry.endsWith(".bin", Qt::CaseInsensitive) || entry.endsWith(".rpd", Qt::CaseInsensitive);
    return Unused{"wrong-kind",
                  Kit::tr("The module \"%1\" has the name but takes %2 only").arg(module.board.Name, module.Pattern()),
                  isOtherImage ? Kit::tr("build the image for this processor")
                               : Kit::tr("give the image itself, with the extension %1").arg(module.Extension())};
}

/// Whether the file is meant for `module`, of a device that is not selected.
std::optional<Unused> AboutOther(const QString& entry, const Module& module)
{
    const bool isMeant = module.board.IsProgram() ? !NameInRightCase(entry, module).isEmpty()
                                                  : entry.contains(module.Prefix(), Qt::CaseInsensitive);
    if (!isMeant)
        return std::nullopt;
    return Unused{"other-device",
                  Kit::tr("It is for another device, \"%1\" (IdDev %2)")
                      .arg(module.device.Name, QString::number(module.device.IdDev)),
                  Kit::tr("leave it out, or choose that device with --device")};
}

std::optional<Unused> AboutBackslash(const QString& entry, const Module&)
{
    if (!entry.contains('\\'))
        return std::nullopt;
    return Unused{"odd-name", Kit::tr("For the panel a \"\\\" divides no folders but is a part of the name"),
                  Kit::tr("pack the archive anew with fwkit pack")};
}

Unused AboutNobodys(const QList<Module>& modules)
{
    constexpr qsizetype MostNames = 10;
    QStringList names;
    for (const Module& module : modules)
        names.append((module.board.IsProgram() ? ProgramEntry(module.board) : module.Pattern()) + " ("
                     + module.board.Name + ')');
    if (names.size() > MostNames)
        names = names.first(MostNames) + QStringList("...");
    return {"nobody", Kit::tr("No module takes it"),
            Kit::tr("leave it out, or give it one of these names: %1").arg(names.join(", "))};
}

} // namespace

std::optional<Unused> WhyUnused(const QString& entry, const Selection& selection)
{
    const QList<Module> modules = ModulesOf(selection.devices);
    for (const Module& module : modules) {
        if (EntryFits(entry, module.Prefix(), module.board))
            return std::nullopt;
    }
    for (const auto about : {AboutDots, AboutCase, AboutKind, AboutBackslash}) {
        for (const Module& module : modules) {
            if (const auto unused = about(entry, module))
                return unused;
        }
    }
    QList<const TDeviceRecord*> others;
    for (int i = 0; i < selection.config->DeviceCount; ++i) {
        if (!selection.devices.contains(&selection.config->Devices.at(i)))
            others.append(&selection.config->Devices.at(i));
    }
    for (const Module& module : ModulesOf(others)) {
        if (const auto unused = AboutOther(entry, module))
            return unused;
    }
    return AboutNobodys(modules);
}
