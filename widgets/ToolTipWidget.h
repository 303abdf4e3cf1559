#pragma once

#include <QFrame>
#include <QPointer>

class DDPModel;
class QAbstractButton;
class QAbstractItemModel;
class QGridLayout;

// The popup of a row's info button: every column of that row, its name on
// the left and its value on the right, on the dark tool-tip surface. It is a
// Qt::Popup, so a click anywhere else closes it; it deletes itself on close
// and unchecks the button it belongs to. `extraRows` follow the columns.
class ToolTipWidget : public QFrame
{
    Q_OBJECT
public:
    using Rows = QList<QPair<QString, QString>>;
    ToolTipWidget(const QAbstractItemModel* model, int row, QWidget* parent = nullptr,
                  QAbstractButton* anchor = nullptr, const Rows& extraRows = {});

    // The table row's start and duration to the CD frame (MM:SS:FF), which
    // the table's cells give to the second only; none for the total row.
    static Rows frameTimeRows(const DDPModel& model, int row);

    // Shows the popup with its top-left corner at `globalPos`, moved inside
    // the screen when it would stick out.
    void showAt(const QPoint& globalPos);

    // The (name, value) pairs shown, in column order; blank values read "-".
    Rows rows() const { return m_rows; }

protected:
    void hideEvent(QHideEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    Rows m_rows;
    QPointer<QAbstractButton> m_anchor;
};
