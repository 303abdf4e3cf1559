#pragma once

#include <QString>

class QWidget;

// The "Open DDP" dialog: a DDP folder, or a ZIP archive holding one, chosen
// by the file type below the list ("DDP folder" picks folders, "DDP archive
// (*.zip)" picks files). Returns the chosen path, empty when cancelled.
QString chooseDdpPath(QWidget* parent, const QString& caption, const QString& start);
