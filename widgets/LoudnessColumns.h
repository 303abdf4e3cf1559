#pragma once

#include "analysis/LoudnessAnalyzer.h"

#include <QObject>
#include <QPointer>
#include <QStringList>

#include <memory>
#include <optional>
#include <vector>

class DDPModel;
class DiscImage;
class InfoBoxWidget;
class QStandardItemModel;

// The loudness of the loaded disc in the window: two columns after the
// loader's thirteen, "Loudness" (integrated, "-9.8 LUFS") and "True Peak"
// ("-0.3 dBTP", in the warning colour above -1.0 dBTP), filled per track and
// in the summary row for the disc; the disc's figures in the info area,
// with the progress there while the analysis runs; every figure in the row's
// popup (through kPopupLinesRole on the Loudness cell). A disc with a track
// whose end the PQ descriptor does not give is not measured (see
// discProgramme); the info area's tooltip gives the reason.
//
// The columns come after the loader's so that their logical indexes stay
// what they were: a header state saved before they existed restores as it
// was, and the new columns appear at its end.
//
// After a load the window calls addColumns() before installing the table,
// and start() once the audio image is open; a new load or closing calls
// cancel().
class LoudnessColumns : public QObject
{
    Q_OBJECT
public:
    static constexpr int kLoudnessColumn = 13;
    static constexpr int kTruePeakColumn = 14;
    // (name, value) pairs as QStringLists in a QVariantList: more lines for
    // the row's popup after the cell's own.
    static constexpr int kPopupLinesRole = Qt::UserRole + 40;

    LoudnessColumns(QStandardItemModel* table, InfoBoxWidget* infoBox, QObject* parent = nullptr);

    // The loader's column names and these two: what the attributes menu offers.
    static QStringList tableColumnNames();

    void addColumns();
    void start(const std::shared_ptr<DDPModel>& model, std::shared_ptr<const DiscImage> image);
    void cancel();

    LoudnessAnalyzer* analyzer() { return &m_analyzer; }
    // The figures of the disc loaded last, once its analysis has finished.
    const std::optional<DiscLoudness>& result() const { return m_result; }

signals:
    // The figures are in the table and the info area.
    void shown();

private:
    void onProgress(int percent);
    void onFinished(const DiscLoudness& result);
    void fillRow(int row, const LoudnessResult& result);

    QStandardItemModel* m_table;
    QPointer<InfoBoxWidget> m_infoBox;
    LoudnessAnalyzer m_analyzer;
    std::vector<int> m_rows; // the table row of each measured track
    std::optional<DiscLoudness> m_result;
};
