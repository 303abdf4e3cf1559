#pragma once

#include <QDialog>

class QLabel;
class QToolButton;

// The picture, the version in its lower left corner and a small close
// button; no system frame.
class AboutDialog : public QDialog
{
    Q_OBJECT
public:
    explicit AboutDialog(QWidget* parent = nullptr);

    static QString versionText();

    QToolButton* closeButton() const { return m_closeButton; }
    QLabel* versionLabel() const { return m_versionLabel; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QToolButton* m_closeButton = nullptr;
    QLabel* m_versionLabel = nullptr;
};
