#include "widgets/PixmapRoutines.h"

#include <QImage>
#include <QImageReader>
#include <QPainter>
#include <QSvgRenderer>

QPixmap renderIcon(const QString& resource, const QSize& pixelSize)
{
    if (pixelSize.isEmpty())
        return QPixmap();
    QImage image(pixelSize, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);

    QSvgRenderer svg(resource);
    if (svg.isValid()) {
        const QSize fitted = svg.defaultSize().scaled(pixelSize, Qt::KeepAspectRatio);
        const QRect target(QPoint((pixelSize.width() - fitted.width()) / 2,
                                  (pixelSize.height() - fitted.height()) / 2),
                           fitted);
        QPainter p(&image);
        p.setRenderHint(QPainter::Antialiasing);
        svg.render(&p, target);
    } else {
        QImageReader reader(resource);
        const QImage source = reader.read();
        if (!source.isNull()) {
            const QImage scaled =
                source.scaled(pixelSize, Qt::KeepAspectRatio, Qt::SmoothTransformation);
            QPainter p(&image);
            p.drawImage((pixelSize.width() - scaled.width()) / 2,
                        (pixelSize.height() - scaled.height()) / 2, scaled);
        }
    }
    return QPixmap::fromImage(image);
}

QPixmap tintPixmap(const QPixmap& pixmap, const QColor& color)
{
    if (pixmap.isNull())
        return pixmap;
    QImage image = pixmap.toImage().convertToFormat(QImage::Format_ARGB32_Premultiplied);
    QPainter p(&image);
    // SourceIn keeps the destination's alpha and takes the source's colour.
    p.setCompositionMode(QPainter::CompositionMode_SourceIn);
    p.fillRect(image.rect(), color);
    p.end();
    QPixmap tinted = QPixmap::fromImage(image);
    tinted.setDevicePixelRatio(pixmap.devicePixelRatio());
    return tinted;
}
