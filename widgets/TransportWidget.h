#pragma once

#include <QWidget>

class QHBoxLayout;
class TransportButton;

// Back, next, stop and play, in that order. The transport controller finds
// the buttons by their object names and drives the player with them.
class TransportWidget : public QWidget
{
    Q_OBJECT
public:
    explicit TransportWidget(QWidget* parent = nullptr);

    TransportButton* backButton() const { return m_backButton; }
    TransportButton* nextButton() const { return m_nextButton; }
    TransportButton* stopButton() const { return m_stopButton; }
    TransportButton* playButton() const { return m_playButton; }

private:
    void setupUi();
    void retranslateUi();
    TransportButton* makeButton(const char* name, const char* icon);

    QHBoxLayout* m_horizontalLayout = nullptr;
    TransportButton* m_backButton = nullptr;
    TransportButton* m_nextButton = nullptr;
    TransportButton* m_stopButton = nullptr;
    TransportButton* m_playButton = nullptr;
};
