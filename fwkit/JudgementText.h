#pragma once

#include "ArchiveJudge.h"

#include <QJsonObject>

/// For a terminal: a table for each device, then boxes, findings and notes.
QString TextOf(const Judgement& judgement, const QString& archive);
QJsonObject JsonOf(const Judgement& judgement, const QString& archive);
