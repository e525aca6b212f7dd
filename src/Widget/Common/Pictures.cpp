#include "Widget/Common/Pictures.h"

#include <QApplication>
#include <QFileInfo>
#include <QImageReader>
#include <QPixmapCache>
#include <QWidget>

#include <cmath>

namespace Pictures {

void enableHighDpiScaling()
{
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
}

namespace {

QPixmap read(const QString& path, qreal ratio, QSize size)
{
    QImageReader reader(path);
    if (ratio > 1.0 && reader.format() != "svg") {
        const int dot = path.lastIndexOf(QLatin1Char('.'));
        const QString twin = path.left(dot) + QStringLiteral("@2x") + path.mid(dot);
        if (dot > 0 && QFileInfo::exists(twin)) {
            QPixmap picture(twin);
            picture.setDevicePixelRatio(2.0);
            if (size.isValid() && size != picture.size() / 2) {
                picture = picture.scaled(size * 2, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
                picture.setDevicePixelRatio(2.0);
            }
            return picture;
        }
    }
    const QSize own = reader.size();
    const QSize logical = size.isValid() ? size : own;
    const qreal scale = reader.format() == "svg" ? ratio : 1.0;
    if (logical.isValid() && (logical * scale != own)) {
        reader.setScaledSize(
            QSize(std::lround(logical.width() * scale), std::lround(logical.height() * scale)));
    }
    QPixmap picture = QPixmap::fromImage(reader.read());
    picture.setDevicePixelRatio(scale);
    return picture;
}

}  // namespace

QPixmap load(const QString& path, const QWidget* widget, QSize size)
{
    const qreal ratio = widget != nullptr ? widget->devicePixelRatioF() : qApp->devicePixelRatio();
    // The level pictures change many times a second while the user speaks.
    const QString key =
        QStringLiteral("%1@%2:%3x%4").arg(path).arg(ratio).arg(size.width()).arg(size.height());
    QPixmap picture;
    if (!QPixmapCache::find(key, &picture)) {
        picture = read(path, ratio, size);
        QPixmapCache::insert(key, picture);
    }
    return picture;
}

}  // namespace Pictures
