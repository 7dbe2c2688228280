#include "files/ui/elidedtips.h"

#include <QHelpEvent>
#include <QToolTip>

namespace ravlin {

bool ElidedTips::helpEvent(
    QHelpEvent *event, QAbstractItemView *view, const QStyleOptionViewItem &option, const QModelIndex &index)
{
    if (event->type() == QEvent::ToolTip && sizeHint(option, index).width() <= option.rect.width()) {
        QToolTip::hideText();
        return true;
    }
    return QStyledItemDelegate::helpEvent(event, view, option, index);
}

} // namespace ravlin
