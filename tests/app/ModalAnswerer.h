#pragma once

#include <QApplication>
#include <QMessageBox>
#include <QTimer>
#include <QWidget>

// Closes every modal box that opens while it lives and remembers its title
// and text, so window flows run with nobody at the keyboard.
class ModalAnswerer : public QObject
{
public:
    struct Box
    {
        QString title;
        QString text;
        bool critical = false; // the icon of an audio problem
    };

    ModalAnswerer()
    {
        connect(&m_timer, &QTimer::timeout, this, [this] {
            QWidget* modal = QApplication::activeModalWidget();
            if (!modal)
                return;
            auto* box = qobject_cast<QMessageBox*>(modal);
            m_boxes.append({modal->windowTitle(), box ? box->text() : QString(),
                            box && box->icon() == QMessageBox::Critical});
            modal->close();
        });
        m_timer.start(20);
    }
    QList<Box> boxes() const { return m_boxes; }
    void clear() { m_boxes.clear(); }
    // Boxes about the audio device are not what a load test looks at.
    QList<Box> loadBoxes() const
    {
        QList<Box> result;
        for (const Box& box : m_boxes)
            if (!box.title.startsWith(QLatin1String("Audio Device")) &&
                box.title != QLatin1String("Unknown Audio Engine Error"))
                result.append(box);
        return result;
    }

private:
    QTimer m_timer;
    QList<Box> m_boxes;
};
