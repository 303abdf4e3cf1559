#include "export/ExportDialogs.h"

#include <QCoreApplication>
#include <QFileDialog>
#include <QMessageBox>

ExportDialogs defaultExportDialogs()
{
    ExportDialogs dialogs;
    dialogs.saveFileName = [](QWidget* parent, const QString& caption, const QString& proposedPath,
                              const QString& filter, QString* selectedFilter) {
        return QFileDialog::getSaveFileName(parent, caption, proposedPath, filter, selectedFilter);
    };
    dialogs.existingDirectory = [](QWidget* parent, const QString& caption,
                                   const QString& startFolder) {
        return QFileDialog::getExistingDirectory(parent, caption, startFolder,
                                                 QFileDialog::ShowDirsOnly);
    };
    dialogs.showError = [](QWidget* parent, const QString& message) {
        // Paths in the message may hold characters rich text would swallow.
        QMessageBox box(QMessageBox::Warning,
                        QCoreApplication::translate("WavExport", "WAV export failed"), message,
                        QMessageBox::Ok, parent);
        box.setTextFormat(Qt::PlainText);
        box.exec();
    };
    return dialogs;
}
