#pragma once

#include "ArchiveJudge.h"

#include <QJsonObject>

/// A word for scripts; Kit::tr() makes one for people of it.
const char* VerdictOf(Certificate certificate);
/// A line for each device: how many of its modules take a file.
QString ServedLines(const Judgement& judgement, const QString& archive);
/// A line for each finding.
QString LinesOf(const QList<Finding>& findings);
/// For a terminal: a table for each device, then boxes, findings and notes.
QString TextOf(const Judgement& judgement, const QString& archive);
QJsonObject JsonOf(const Judgement& judgement, const QString& archive);
