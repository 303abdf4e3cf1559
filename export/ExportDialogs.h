#pragma once

#include <QString>

#include <functional>

class QWidget;

// The questions the export flows ask the user, behind functions so that the
// flows can run with nobody at the keyboard (tests answer them). The defaults
// show the toolkit's dialogs.
struct ExportDialogs
{
    // QFileDialog::getSaveFileName; an empty answer cancels. `selectedFilter`
    // (may be null) holds the filter to offer first, and on return the one
    // the user chose.
    std::function<QString(QWidget* parent, const QString& caption, const QString& proposedPath,
                          const QString& filter, QString* selectedFilter)>
        saveFileName;
    // QFileDialog::getExistingDirectory with ShowDirsOnly; empty cancels.
    std::function<QString(QWidget* parent, const QString& caption, const QString& startFolder)>
        existingDirectory;
    // One modal message for an export that could not be done.
    std::function<void(QWidget* parent, const QString& message)> showError;
};

ExportDialogs defaultExportDialogs();
