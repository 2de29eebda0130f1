#pragma once

#include "TestData.h"

#include <QDir>
#include <QFileInfo>

/// Everything below `folder` except paths that begin with `leftOut`: "path=content" (":size" for long content; "*"
/// after the path of an executable file), folders as "path/", links as "path@".
inline QStringList Tree(const QString& folder, const QString& leftOut = "\n", const QString& below = {})
{
    QStringList tree;
    const QDir dir(folder + '/' + below);
    for (const QFileInfo& info :
         dir.entryInfoList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name)) {
        const QString path = below + info.fileName();
        if (path.startsWith(leftOut))
            continue;
        if (info.isSymLink())
            tree.append(path + '@');
        else if (info.isDir())
            tree.append(QStringList(path + '/') + Tree(folder, leftOut, path + '/'));
        else
            tree.append(path + (info.permission(QFile::ExeOwner) ? "*" : "")
                        + (info.size() > 20 ? ':' + QByteArray::number(info.size())
                                            : '=' + testdata::ReadFile(info.filePath())));
    }
    return tree;
}
