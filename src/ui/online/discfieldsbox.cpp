// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/online/discfieldsbox.h"

#include "core/app/idiomas.h"
#include "core/naming/lostfields.h"
#include "ui/controls/making.h"
#include "ui/controls/plain/plainlabel.h"
#include "ui/controls/refusedmark.h"

#include <QGridLayout>
#include <QLineEdit>

namespace ravlin {

namespace {

/// A box that can't store every text, and what is said of one that goes with the field.
struct Restricted
{
    TagEdits::Field field;
    const QLineEdit *box;
    Text lossText;
};

QLineEdit *textBox(const char *name, QWidget *parent)
{
    auto *box = new QLineEdit(parent);
    box->setObjectName(QLatin1String(name));
    keepReadable(box);
    return box;
}

PlainLabel *labelOf(const char *name, QLineEdit *box, QWidget *parent)
{
    auto *label = new PlainLabel(parent);
    label->setObjectName(QLatin1String(name));
    label->setBuddy(box);
    return label;
}

} // namespace

DiscFieldsBox::DiscFieldsBox(QWidget *parent)
    : QWidget(parent), m_artist(textBox("tartista", this)), m_album(textBox("talbum", this)),
      m_year(textBox("ta_o", this)), m_genre(textBox("testilo", this))
{
    setObjectName(QStringLiteral("discFields"));
    m_artistLabel = labelOf("label1", m_artist, this);
    m_albumLabel = labelOf("label2", m_album, this);
    m_yearLabel = labelOf("Label5", m_year, this);
    m_genreLabel = labelOf("Label6", m_genre, this);

    auto *grid = new QGridLayout(this);
    grid->setContentsMargins({});
    grid->addWidget(m_artistLabel, 0, 0);
    grid->addWidget(m_artist, 0, 1);
    grid->addWidget(m_yearLabel, 0, 2);
    grid->addWidget(m_year, 0, 3);
    grid->addWidget(m_albumLabel, 1, 0);
    grid->addWidget(m_album, 1, 1);
    grid->addWidget(m_genreLabel, 1, 2);
    grid->addWidget(m_genre, 1, 3);
    grid->setColumnStretch(1, 3);
    grid->setColumnStretch(3, 1);
    for (const QLineEdit *box : {m_artist, m_album, m_year, m_genre})
        connect(box, &QLineEdit::textChanged, this, &DiscFieldsBox::edited);
    setTabOrder(m_artist, m_album);
    setTabOrder(m_album, m_year);
    setTabOrder(m_year, m_genre);
}

void DiscFieldsBox::setFields(const DiscFields &fields)
{
    m_artist->setText(fields.artist);
    m_album->setText(fields.album);
    m_year->setText(fields.year);
    m_genre->setText(fields.genre);
    for (QLineEdit *box : {m_artist, m_album, m_year, m_genre})
        box->setCursorPosition(0); // show the start of a long text
}

DiscFields DiscFieldsBox::fields() const
{
    return {m_artist->text(), m_album->text(), m_year->text(), m_genre->text()};
}

QStringList DiscFieldsBox::remarks(const Captions &captions) const
{
    QStringList remarks;
    for (const auto &[field, box, text] : {Restricted{&TagRecord::Year, m_year, Text::LookupYearNotSaved},
             Restricted{&TagRecord::Genre, m_genre, Text::LookupGenreNotSaved}}) {
        if (m_isOnlyEdited && !isStorable(field, box->text()))
            remarks << remarkNotSaved(field, box->text(), captions);
        else if (!m_isOnlyEdited && !isWritable(field, box->text()))
            remarks << captions.text(text).replace(QStringLiteral("%1"), box->text());
    }
    return remarks;
}

bool DiscFieldsBox::refuse(const Captions &captions)
{
    for (const auto &[field, box] : {std::pair(TagEdits::Field(&TagRecord::Year), m_year),
             std::pair(TagEdits::Field(&TagRecord::Genre), m_genre)}) {
        if (isStorable(field, box->text()))
            continue;
        markRefused(box, remarkNotSaved(field, box->text(), captions));
        return true;
    }
    return false;
}

QWidget *DiscFieldsBox::lastBox() const
{
    return m_genre;
}

void DiscFieldsBox::applyCaptions(const Captions &captions)
{
    m_artistLabel->setText(captions.text(Caption::Artist));
    m_albumLabel->setText(captions.text(Caption::Album));
    m_yearLabel->setText(captions.text(Caption::Year));
    m_genreLabel->setText(captions.text(Caption::Genre));
    for (QLineEdit *box : {m_year, m_genre})
        box->setToolTip(captions.text(Text::TipKeepsValue));
}

} // namespace ravlin
