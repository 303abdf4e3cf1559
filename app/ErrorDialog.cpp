#include "app/ErrorDialog.h"

#include "ddp/ErrorTexts.h"
#include "widgets/FontTable.h"

ErrorDialog::ErrorDialog(const LoadResult& result, QWidget* parent) : QMessageBox(parent)
{
    setFont(FontTable::font(2));
    setIcon(QMessageBox::Information);
    setWindowTitle(errorTitle(result.kind));
    m_text = errorText(result.kind, result.message);
    setTextFormat(Qt::RichText);
    setText(m_text);
    // No buttons added: QMessageBox shows its standard OK.
}
