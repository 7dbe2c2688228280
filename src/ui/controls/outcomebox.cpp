// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/controls/outcomebox.h"

#include "core/app/batch.h"
#include "core/app/idiomas.h"
#include "core/app/showntext.h"
#include "core/platform/path.h"
#include "ui/controls/plain/plainlabel.h"

#include <QListWidget>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>

#include <algorithm>

namespace ravlin {

namespace {

constexpr int LineLetters = 70; ///< width of the list in average letters
constexpr qsizetype HighestInLines = 12;

} // namespace

OutcomeBox::OutcomeBox(const Captions &captions, const QString &headline, const QStringList &lines, QWidget *parent)
    : QDialog(parent)
{
    setObjectName(QStringLiteral("outcome"));
    setWindowTitle(QStringLiteral("ravlin!"));
    auto *sign = new PlainLabel(this);
    const int size = style()->pixelMetric(QStyle::PM_MessageBoxIconSize, nullptr, this);
    sign->setPixmap(style()->standardIcon(QStyle::SP_MessageBoxWarning, nullptr, this).pixmap(size, size));
    auto *head = new PlainLabel(headline, this);
    head->setObjectName(QStringLiteral("outcomeHeadline"));
    auto *list = new QListWidget(this);
    list->setObjectName(QStringLiteral("outcomeLines"));
    list->setAccessibleName(captions.text(Text::NameOutcome));
    list->addItems(lines);
    list->setWordWrap(true);
    list->setMinimumWidth(fontMetrics().averageCharWidth() * LineLetters);
    const auto height = std::clamp<qsizetype>(2 * list->count(), 3, HighestInLines);
    list->setMinimumHeight(static_cast<int>(height) * fontMetrics().lineSpacing());
    auto *ok = new QPushButton(captions.text(Caption::Ok), this);
    ok->setObjectName(QStringLiteral("outcomeOk"));
    ok->setDefault(true);
    ok->setFocus();
    connect(ok, &QPushButton::clicked, this, &QDialog::accept);

    auto *top = new QHBoxLayout;
    top->addWidget(sign);
    top->addWidget(head, 1);
    auto *rows = new QVBoxLayout(this);
    rows->addLayout(top);
    rows->addWidget(list, 1);
    rows->addWidget(ok, 0, Qt::AlignRight);
    setAccessibleDescription(headline);
}

void tellRefused(const Captions &captions, const QStringList &paths, const BatchOutcome &outcome, QWidget *parent)
{
    QStringList lines;
    for (qsizetype row = 0; row < outcome.takenCount(); ++row) {
        const Error *error = outcome.error(row);
        if (error != nullptr && isRefusal(error->code))
            lines << shownLine(platform::nameOf(paths[row])) + captions.mark(u':') + u' ' +
                         captions.errorText(error->code);
    }
    if (lines.isEmpty())
        return;
    auto *box = new OutcomeBox(captions, captions.text(Text::OutcomeRefused).arg(lines.size()), lines, parent);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->open();
}

} // namespace ravlin
