// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/online/discfieldsbox.h"

#include "core/app/idiomas.h"
#include "core/tags/record/genres.h"

#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>

namespace ravlin {

namespace {

constexpr int YearLetters = 8;

QLineEdit *textBox(const char *name, QWidget *parent)
{
    auto *box = new QLineEdit(parent);
    box->setObjectName(QLatin1String(name));
    return box;
}

QLabel *labelOf(const char *name, QLineEdit *box, QWidget *parent)
{
    auto *label = new QLabel(parent);
    label->setObjectName(QLatin1String(name));
    label->setBuddy(box);
    return label;
}

} // namespace

DiscFieldsBox::DiscFieldsBox(QWidget *parent)
    : QWidget(parent), tartista(textBox("tartista", this)), talbum(textBox("talbum", this)),
      ta_o(textBox("ta_o", this)), testilo(textBox("testilo", this))
{
    setObjectName(QStringLiteral("discFields"));
    label1 = labelOf("label1", tartista, this);
    label2 = labelOf("label2", talbum, this);
    Label5 = labelOf("Label5", ta_o, this);
    Label6 = labelOf("Label6", testilo, this);
    ta_o->setMinimumWidth(YearLetters * fontMetrics().averageCharWidth());

    auto *grid = new QGridLayout(this);
    grid->setContentsMargins({});
    grid->addWidget(label1, 0, 0);
    grid->addWidget(tartista, 0, 1);
    grid->addWidget(Label5, 0, 2);
    grid->addWidget(ta_o, 0, 3);
    grid->addWidget(label2, 1, 0);
    grid->addWidget(talbum, 1, 1);
    grid->addWidget(Label6, 1, 2);
    grid->addWidget(testilo, 1, 3);
    grid->setColumnStretch(1, 3);
    grid->setColumnStretch(3, 1);
    for (const QLineEdit *box : {tartista, talbum, ta_o, testilo})
        connect(box, &QLineEdit::textChanged, this, &DiscFieldsBox::edited);
    setTabOrder(tartista, talbum);
    setTabOrder(talbum, ta_o);
    setTabOrder(ta_o, testilo);
}

void DiscFieldsBox::setFields(const DiscFields &fields)
{
    tartista->setText(fields.artist);
    talbum->setText(fields.album);
    ta_o->setText(fields.year);
    testilo->setText(fields.genre);
    for (QLineEdit *box : {tartista, talbum, ta_o, testilo})
        box->setCursorPosition(0); // of a text that is too long, the beginning is seen
}

DiscFields DiscFieldsBox::fields() const
{
    return {tartista->text(), talbum->text(), ta_o->text(), testilo->text()};
}

QStringList DiscFieldsBox::remarks(const Captions &captions) const
{
    QStringList remarks;
    if (!ta_o->text().isEmpty() && !isWritableYear(ta_o->text()))
        remarks << captions.text(Text::LookupYearNotSaved);
    if (!testilo->text().isEmpty() && GenreNameToNumber(testilo->text()) == GenreNone)
        remarks << captions.text(Text::LookupGenreNotSaved).arg(testilo->text());
    return remarks;
}

QWidget *DiscFieldsBox::lastBox() const
{
    return testilo;
}

void DiscFieldsBox::applyCaptions(const Captions &captions)
{
    label1->setText(captions.text(Caption::Artist));
    label2->setText(captions.text(Caption::Album));
    Label5->setText(captions.text(Caption::Year));
    Label6->setText(captions.text(Caption::Genre));
    for (QLineEdit *box : {ta_o, testilo})
        box->setToolTip(captions.text(Text::TipKeepsValue));
}

} // namespace ravlin
