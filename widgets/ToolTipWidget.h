#pragma once

#include <QFrame>
#include <QPointer>

class QAbstractButton;
class QAbstractItemModel;
class QGridLayout;

// The popup of a row's info button: every column of that row, its name on
// the left and its value on the right, on the dark tool-tip surface. It is a
// Qt::Popup, so a click anywhere else closes it; it deletes itself on close
// and unchecks the button it belongs to.
class ToolTipWidget : public QFrame
{
    Q_OBJECT
public:
    ToolTipWidget(const QAbstractItemModel* model, int row, QWidget* parent = nullptr,
                  QAbstractButton* anchor = nullptr);

    // Shows the popup with its top-left corner at `globalPos`, moved inside
    // the screen when it would stick out.
    void showAt(const QPoint& globalPos);

    // The (name, value) pairs shown, in column order; blank values read "-".
    QList<QPair<QString, QString>> rows() const { return m_rows; }

protected:
    void hideEvent(QHideEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    QList<QPair<QString, QString>> m_rows;
    QPointer<QAbstractButton> m_anchor;
};
