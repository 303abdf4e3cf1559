#pragma once

#include <QStringList>

// Each command takes the arguments after its name and returns the exit
// status: 0 success, 1 failure, 2 usage error.
int runInfo(const QStringList& args);
int runPlay(const QStringList& args);
int runExport(const QStringList& args);
int runVerify(const QStringList& args);
int runAnalyze(const QStringList& args);
int runCue(const QStringList& args);
int runPqSheet(const QStringList& args);
int runTracks(const QStringList& args);
