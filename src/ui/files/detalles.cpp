// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/files/detalles.h"

#include "core/app/idiomas.h"
#include "ui/controls/making.h"
#include "ui/controls/plain/plainlabel.h"
#include "ui/files/changemodel.h"

#include <QHeaderView>
#include <QPushButton>
#include <QTreeView>
#include <QVBoxLayout>

namespace ravlin {

namespace {

constexpr int LettersInARow = 110;
constexpr int RowsShown = 16;
constexpr qsizetype MostUnfolded = 50; ///< files whose values are shown at once

} // namespace

detalles::detalles(const Captions &captions, const QString &headline, const history::Summary &summary, QWidget *parent)
    : QDialog(parent)
{
    setObjectName(QStringLiteral("detalles"));
    setWindowTitle(captions.text(Text::TitleDetails));
    auto *head = made<PlainLabel>("detalles_texto", this, headline);
    head->setWordWrap(true);
    auto *model = new ChangeModel(captions, this);
    model->setFiles(summary.files, summary.entry.folder);
    auto *files = made<QTreeView>("detalles_lista", this);
    files->setUniformRowHeights(true);
    files->setAlternatingRowColors(true);
    files->setAccessibleName(captions.text(Text::TitleDetails));
    files->setModel(model);
    files->header()->setStretchLastSection(true);
    for (int column = 0; column < ChangeModel::ColumnCount; ++column)
        files->setColumnWidth(column, fontMetrics().averageCharWidth() * LettersInARow / ChangeModel::ColumnCount);
    if (model->rowCount() <= MostUnfolded)
        files->expandAll();
    files->setCurrentIndex(model->index(0, 0));
    files->setMinimumHeight(RowsShown * fontMetrics().lineSpacing());
    auto *close = made<QPushButton>("detalles_cerrar", this, captions.text(Text::CloseWindow));
    connect(close, &QPushButton::clicked, this, &QDialog::accept);

    auto *rows = new QVBoxLayout(this);
    rows->addWidget(head);
    rows->addWidget(files, 1);
    rows->addWidget(close, 0, Qt::AlignRight);
    resize(fontMetrics().averageCharWidth() * LettersInARow, sizeHint().height());
    setAccessibleDescription(headline);
    files->setFocus();
}

} // namespace ravlin
