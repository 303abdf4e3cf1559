#pragma once

#include "analysis/LoudnessResult.h"

#include <QJsonObject>
#include <QPair>
#include <QString>
#include <QVector>

// The figures as the table, the info area, the row's popup and tivora-ddp
// write them: one decimal and the unit ("-9.8 LUFS", "-0.3 dBTP"); silence
// reads "-inf".
QString lufsText(double lufs);
QString luText(double lu);
QString dbfsText(double dbfs);
QString dbtpText(double dbtp);

// A true peak above -1.0 dBTP may clip a consumer's converter or an encoder.
bool truePeakNeedsLook(double dbtp);

// Every figure of a result as (name, value) lines, in reading order.
QVector<QPair<QString, QString>> loudnessLines(const LoudnessResult& result);

// The numbers for scripts; minus infinity is null.
QJsonObject loudnessJson(const LoudnessResult& result);
