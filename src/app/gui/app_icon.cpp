#include "app/gui/app_icon.h"

#include <QPainter>
#include <QPixmap>
#include <QSvgRenderer>

namespace tunebox::gui {

QIcon appIcon() {
    QSvgRenderer renderer(QStringLiteral(":/tunebox/tunebox.svg"));
    QIcon icon;
    for (const int side : {16, 24, 32, 48, 64, 128, 256}) {
        QPixmap pixmap(side, side);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        renderer.render(&painter);
        painter.end();
        icon.addPixmap(pixmap);
    }
    return icon;
}

}  // namespace tunebox::gui
