// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/controls/refusedmark.h"

#include "ui/controls/icons.h"

#include <QAction>
#include <QLineEdit>

namespace ravlin {

void markRefused(QLineEdit *box, const QString &reason, const std::function<void()> &edited)
{
    const QString name = QStringLiteral("refused");
    box->setFocus();
    box->selectAll();
    if (box->findChild<QAction *>(name) != nullptr)
        return;
    auto *sign = new QAction(themedIcon(QStringLiteral("triangle-alert"), box->palette()), reason, box);
    sign->setObjectName(name);
    box->addAction(sign, QLineEdit::TrailingPosition);
    const QString toolTip = box->toolTip();
    box->setToolTip(reason);
    box->setAccessibleDescription(reason);
    QObject::connect(box, &QLineEdit::textChanged, sign, [box, sign, toolTip, edited] {
        sign->setObjectName({});
        sign->disconnect();
        QObject::disconnect(box, nullptr, sign, nullptr);
        box->removeAction(sign);
        box->setToolTip(toolTip);
        box->setAccessibleDescription({});
        sign->deleteLater();
        if (edited)
            edited();
    });
}

} // namespace ravlin
