// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/online/buscaweb.h"

#include "core/app/idiomas.h"
#include "ui/controls/icons.h"

#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>

namespace ravlin {

namespace {

constexpr int TextLetters = 40; ///< width of the text box in average letters

} // namespace

buscaweb::buscaweb(const Captions &captions, const QString &text, QWidget *parent)
    : QDialog(parent), busca(new QLineEdit(text, this)), buscar(new QPushButton(captions.text(Caption::Search), this))
{
    setObjectName(QStringLiteral("buscaweb"));
    setWindowTitle(captions.text(Caption::SearchAgain));
    busca->setObjectName(QStringLiteral("busca"));
    busca->setAccessibleName(captions.text(Text::NameSearchText));
    busca->setPlaceholderText(captions.text(Text::NameSearchText));
    busca->setToolTip(captions.text(Text::TipSearchAgain));
    busca->setClearButtonEnabled(true);
    busca->setMinimumWidth(TextLetters * fontMetrics().averageCharWidth());
    busca->selectAll();
    busca->setFocus();
    buscar->setObjectName(QStringLiteral("buscar"));
    buscar->setIcon(themedIcon(QStringLiteral("search"), palette()));
    buscar->setDefault(true); // Enter in the box
    connect(buscar, &QPushButton::clicked, this, &buscaweb::search);

    auto *row = new QHBoxLayout(this);
    row->addWidget(busca, 1);
    row->addWidget(buscar);
}

void buscaweb::search()
{
    accept();
    Q_EMIT searchRequested(busca->text());
}

} // namespace ravlin
