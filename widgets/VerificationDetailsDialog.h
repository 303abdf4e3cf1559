#pragma once

#include <QDialog>

class QTableWidget;
struct VerificationReport;

// What a verification found, file by file and finding by finding: each
// listed file's name, checksum file, expected and computed digest and
// verdict (files listed but absent, and files of the DDP that no checksum
// lists, among them), then the disc check's findings.
class VerificationDetailsDialog : public QDialog
{
    Q_OBJECT
public:
    explicit VerificationDetailsDialog(const VerificationReport& report, QWidget* parent = nullptr);

    QTableWidget* filesTable() const { return m_files; }
    QTableWidget* findingsTable() const { return m_findings; }

private:
    QTableWidget* m_files = nullptr;
    QTableWidget* m_findings = nullptr;
};
