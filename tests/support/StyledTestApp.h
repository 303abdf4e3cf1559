#pragma once

#include "ddp/Settings.h"
#include "widgets/CustomStyle.h"
#include "widgets/Resources.h"

#include <QApplication>
#include <QSettings>
#include <QStandardPaths>

// Widgets drawn as the program draws them: its icons, style and palette,
// with settings kept apart from the user's.
inline void styleAsTheProgram()
{
    QStandardPaths::setTestModeEnabled(true);
    initResources();
    QApplication::setStyle(new CustomStyle);
    QApplication::setPalette(CustomStyle::darkPalette());
}

// The program's names, so that settings land where the window reads them
// (under test mode's own folder). Tests that run beside each other give an
// application name of their own: windows write their geometry when they
// close, and two tests on one settings file would read each other's.
inline void useTheProgramsSettings(const QString& application = QStringLiteral("Tivora 1.5"))
{
    QStandardPaths::setTestModeEnabled(true);
    QApplication::setOrganizationName(QStringLiteral("Korvane"));
    QApplication::setApplicationName(application);
    QSettings::setDefaultFormat(QSettings::IniFormat);
}
