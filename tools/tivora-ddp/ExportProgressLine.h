#pragma once

#include <QString>

#include <cstdio>

// One line on a terminal that shows how far an export is: the file being
// written, its place among the files and a bar over the two-phase scale
// (reading, then writing: 0 to 20000). Draws nothing when the stream is not a
// terminal, so scripts that capture standard error see only messages.
class ExportProgressLine
{
public:
    explicit ExportProgressLine(std::FILE* stream);
    ~ExportProgressLine();

    bool enabled() const { return m_enabled; }
    void setFile(const QString& name, int ordinal, int count);
    void setValue(qint64 value);
    // Ends the line so that what follows starts on a fresh one.
    void finish();

private:
    void draw();

    std::FILE* m_stream;
    bool m_enabled = false;
    bool m_drawn = false;
    QString m_name;
    int m_ordinal = 1;
    int m_count = 1;
    qint64 m_value = 0;
};
