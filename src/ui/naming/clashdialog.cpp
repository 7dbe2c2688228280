// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/naming/clashdialog.h"

#include "core/app/idiomas.h"
#include "core/files/list/listcolumns.h"

#include <QCheckBox>
#include <QLabel>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>

namespace ravlin {

namespace {

constexpr int QuestionLetters = 50; ///< width of the question in average letters

QLabel *warningSign(QWidget *parent)
{
    auto *sign = new QLabel(parent);
    const int size = parent->style()->pixelMetric(QStyle::PM_MessageBoxIconSize, nullptr, parent);
    sign->setPixmap(parent->style()->standardIcon(QStyle::SP_MessageBoxWarning, nullptr, parent).pixmap(size, size));
    sign->setAlignment(Qt::AlignTop);
    return sign;
}

} // namespace

ClashDialog::ClashDialog(
    const Captions &captions, const QString &takenName, const QString &presentName, QWidget *parent)
    : QDialog(parent), m_forAll(new QCheckBox(captions.text(Text::ClashForAll), this)), m_buttons(new QHBoxLayout)
{
    setObjectName(QStringLiteral("clash"));
    setWindowTitle(captions.text(Text::ClashTitle));
    auto *question = new QLabel(this);
    question->setObjectName(QStringLiteral("clashQuestion"));
    question->setTextFormat(Qt::PlainText);
    question->setWordWrap(true);
    question->setMinimumWidth(fontMetrics().averageCharWidth() * QuestionLetters);
    question->setText(captions.text(Text::ClashQuestion).arg(shownName(takenName), shownName(presentName)));
    m_forAll->setObjectName(QStringLiteral("clashForAll"));

    auto *message = new QHBoxLayout;
    message->addWidget(warningSign(this));
    message->addWidget(question, 1);
    m_buttons->addStretch();
    addButton("clashSkip", captions.text(Text::ClashSkip), ClashAnswer::Skip);
    addButton("clashKeepBoth", captions.text(Text::ClashKeepBoth), ClashAnswer::KeepBoth);
    addButton("clashStop", captions.text(Text::ClashStop), ClashAnswer::Stop);
    auto *rows = new QVBoxLayout(this);
    rows->addLayout(message);
    rows->addWidget(m_forAll);
    rows->addLayout(m_buttons);
    rows->setSizeConstraint(QLayout::SetFixedSize);
    setAccessibleDescription(question->text());
}

void ClashDialog::addButton(const char *name, const QString &text, ClashAnswer answer)
{
    auto *button = new QPushButton(text, this);
    button->setObjectName(QLatin1String(name));
    button->setDefault(answer == ClashAnswer::Skip);
    m_buttons->addWidget(button);
    connect(button, &QPushButton::clicked, this, [this, answer] {
        m_answer = answer;
        accept();
    });
}

ClashDialog::Decision ClashDialog::decide()
{
    m_answer = ClashAnswer::Stop;
    exec();
    return {m_answer, m_forAll->isChecked()};
}

} // namespace ravlin
