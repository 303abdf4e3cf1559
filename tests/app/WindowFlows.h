#pragma once

#include "app/MainWindow.h"
#include "widgets/TableViewWidget.h"

#include <QMimeData>
#include <QTableView>
#include <QtTest>

// Steps the window tests take again and again, as a person would take them.

// Drags `hovering` over the window and, if it is taken, drops `dropped`
// (the same path unless told otherwise). Returns whether the drag was taken.
inline bool dropOnto(QWidget& window, const QString& hovering, QString dropped = {})
{
    QMimeData enterMime;
    enterMime.setUrls({QUrl::fromLocalFile(hovering)});
    QDragEnterEvent enter(QPoint(50, 50), Qt::CopyAction, &enterMime, Qt::LeftButton,
                          Qt::NoModifier);
    QApplication::sendEvent(&window, &enter);
    if (!enter.isAccepted())
        return false;
    QMimeData dropMime;
    dropMime.setUrls({QUrl::fromLocalFile(dropped.isEmpty() ? hovering : dropped)});
    QDropEvent drop(QPointF(50, 50), Qt::CopyAction, &dropMime, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&window, &drop);
    return true;
}

// The start-up check may have opened a box about the audio device (there
// may be none here); input reaches the window once the answerer closed it.
inline void settle()
{
    QTest::qWait(50);
    QTRY_VERIFY(!QApplication::activeModalWidget());
}

// Shown, with any start-up box gone, and taking the keyboard.
inline bool showActive(MainWindow& window)
{
    window.show();
    if (!QTest::qWaitForWindowExposed(&window))
        return false;
    settle();
    window.activateWindow();
    return QTest::qWaitForWindowActive(&window);
}

// The Open dialog answers `path` from now on.
inline void chooseFolder(MainWindow& window, const QString& path)
{
    window.setFolderChooser([path](QWidget*, const QString&, const QString&) { return path; });
}

// A double-click on the Track cell of `row`.
inline void doubleClickRow(MainWindow& window, int row, int column = 1)
{
    QTableView* view = window.tableViewWidget()->tableView();
    window.onCellDoubleClicked(view->model()->index(row, column));
}
