#include "app/OpenDdpDialog.h"

#include <QFileDialog>
#include <QStringList>

namespace {

QString folderFilter()
{
    return QFileDialog::tr("DDP folder");
}

QString archiveFilter()
{
    return QFileDialog::tr("DDP archive (*.zip)");
}

void showFolders(QFileDialog& dialog, bool folders)
{
    dialog.setFileMode(folders ? QFileDialog::Directory : QFileDialog::ExistingFile);
    dialog.setOption(QFileDialog::ShowDirsOnly, folders);
}

} // namespace

QString chooseDdpPath(QWidget* parent, const QString& caption, const QString& start)
{
    QFileDialog dialog(parent, caption, start);
    // The system's dialogs cannot switch between picking folders and files
    // while open; Qt's own can.
    dialog.setOption(QFileDialog::DontUseNativeDialog, true);
    dialog.setAcceptMode(QFileDialog::AcceptOpen);
    dialog.setNameFilters({folderFilter(), archiveFilter()});
    dialog.setObjectName(QStringLiteral("openDdpDialog"));
    showFolders(dialog, true);
    QObject::connect(
        &dialog, &QFileDialog::filterSelected, &dialog,
        [&dialog](const QString& filter) { showFolders(dialog, filter == folderFilter()); });
    if (dialog.exec() != QDialog::Accepted)
        return {};
    const QStringList chosen = dialog.selectedFiles();
    return chosen.isEmpty() ? QString() : chosen.first();
}
