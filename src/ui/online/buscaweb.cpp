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
    : QDialog(parent), m_text(new QLineEdit(text, this)),
      m_search(new QPushButton(captions.text(Caption::Search), this))
{
    setObjectName(QStringLiteral("buscaweb"));
    setWindowTitle(captions.text(Caption::SearchAgain));
    m_text->setObjectName(QStringLiteral("busca"));
    m_text->setAccessibleName(captions.text(Text::NameSearchText));
    m_text->setPlaceholderText(captions.text(Text::NameSearchText));
    m_text->setToolTip(captions.text(Text::TipSearchAgain));
    m_text->setClearButtonEnabled(true);
    m_text->setMinimumWidth(TextLetters * fontMetrics().averageCharWidth());
    m_text->selectAll();
    m_text->setFocus();
    m_search->setObjectName(QStringLiteral("buscar"));
    m_search->setIcon(themedIcon(QStringLiteral("search"), palette()));
    m_search->setDefault(true); // Enter in the box
    connect(m_search, &QPushButton::clicked, this, &buscaweb::search);

    auto *row = new QHBoxLayout(this);
    row->addWidget(m_text, 1);
    row->addWidget(m_search);
}

void buscaweb::search()
{
    accept();
    Q_EMIT searchRequested(m_text->text());
}

} // namespace ravlin
