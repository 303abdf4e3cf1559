#pragma once

#include "ddp/DDPModel.h"
#include "ddp/DdpLoader.h"
#include "ddp/ErrorKind.h"

#include <QByteArray>
#include <QString>

#include <memory>

class QStandardItemModel;

// Everything `tivora-ddp info` reports about one path, gathered the way the
// window does it: the path must exist (4), the open dialog's check (6, then
// 5), then the load (7 to 12).
struct InfoReport
{
    QString folder;
    LoadResult result;
    DdpFileNames files;
    std::shared_ptr<QStandardItemModel> table;
    std::shared_ptr<DDPModel> model;
};

// PATH is a DDP folder or a file inside one, which stands for its folder.
InfoReport makeInfoReport(const QString& path);

// One JSON object and a new line.
QByteArray infoReportJson(const InfoReport& report);
// A table for a person.
QByteArray infoReportText(const InfoReport& report);
