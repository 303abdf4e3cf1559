#pragma once

#include "ddp/ErrorKind.h"

#include <QMessageBox>

// The modal box that reports a failed load: title and rich text by kind.
class ErrorDialog : public QMessageBox
{
    Q_OBJECT
public:
    explicit ErrorDialog(const LoadResult& result, QWidget* parent = nullptr);

    // The text the box was built with.
    const QString& builtText() const { return m_text; }

protected:
    QString m_text;
};
