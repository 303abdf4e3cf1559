#include "export/FileWriterOneTrack.h"

#include <QThread>

void FileWriterOneTrack::process()
{
    Q_ASSERT(QThread::currentThread() == thread());
    const QString message = copyRange();
    if (message.isEmpty())
        emit finished();
    else
        emit failed(message);
}
