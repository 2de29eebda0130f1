#pragma once

#include "ArchiveJudge.h"

#include <QJsonObject>

/// The untranslated word for JSON; Kit::tr() translates it for people.
const char* VerdictOf(Certificate certificate);
/// A line for each device: how many of its modules take a file.
QString ServedLines(const Judgement& judgement, const QString& archive);
/// A line for each finding.
QString LinesOf(const QList<Finding>& findings);
/// For a terminal: a table for each device, then alerts, findings and notes.
QString TextOf(const Judgement& judgement, const QString& archive);
QJsonObject JsonOf(const Judgement& judgement, const QString& archive);
