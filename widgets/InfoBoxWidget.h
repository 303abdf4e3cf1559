#pragma once

#include <QWidget>

class DDPModel;
class QGridLayout;
class QHBoxLayout;
class QLabel;
class VerificationLine;

// UPC/EAN, artist and album of the loaded disc. A value the disc does not
// carry reads "-".
class InfoBoxWidget : public QWidget
{
    Q_OBJECT
public:
    explicit InfoBoxWidget(QWidget* parent = nullptr);

    // ARTIST and ALBUM are the album record's performer and title (only with
    // CD-Text). UPC/EAN is the album record's code, else the first non-blank
    // UPC/EAN field of the PQ entries, else the DDPID's.
    void setModel(const DDPModel& model);
    void clear();

    QLabel* upcEanLabel() const { return m_upcEanLabel; }
    QLabel* artistLabel() const { return m_artistLabel; }
    QLabel* albumLabel() const { return m_albumLabel; }
    // Lines under the values for what the engineer must know about the disc
    // as a whole, one each (an image shorter than its PQ, CD-Text too long
    // for the lead-in, a data session left out); hidden when all is well.
    // text() holds every note; at most two lines are shown, each cut to the
    // width, and the tool tip holds them all.
    QLabel* statusLabel() const { return m_statusLabel; }
    // The checksum verdict and the disc check's count, under the notes;
    // hidden until a verification starts. setModel and clear leave it alone.
    VerificationLine* verificationLine() const { return m_verificationLine; }
    // The disc's loudness and true peak beside the album, or the progress of
    // their measurement; "-" until then. Filled by LoudnessColumns.
    QLabel* loudnessLabel() const { return m_loudnessLabel; }

private:
    void setupUi();
    void retranslateUi();

    QHBoxLayout* m_mainInfoLayout = nullptr;
    QGridLayout* m_gridLayout = nullptr;
    QLabel* m_upcEanCaptionLabel = nullptr;
    QLabel* m_artistCaptionLabel = nullptr;
    QLabel* m_albumCaptionLabel = nullptr;
    QLabel* m_upcEanLabel = nullptr;
    QLabel* m_artistLabel = nullptr;
    QLabel* m_albumLabel = nullptr;
    QLabel* m_statusLabel = nullptr;
    VerificationLine* m_verificationLine = nullptr;
    QLabel* m_loudnessCaptionLabel = nullptr;
    QLabel* m_loudnessLabel = nullptr;
};
