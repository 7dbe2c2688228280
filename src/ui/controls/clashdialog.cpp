// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/controls/clashdialog.h"

#include "core/app/idiomas.h"
#include "core/app/showntext.h"
#include "core/platform/path.h"
#include "ui/controls/plain/plainlabel.h"

#include <QCheckBox>
#include <QDateTime>
#include <QLocale>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>

namespace ravlin {

namespace {

constexpr int QuestionLetters = 50; ///< width of the question in average letters
constexpr qint64 NanosecondsInMillisecond = 1'000'000;

QString shownInSentence(const QString &name)
{
    return shownLine(name, MostNameLetters);
}

/// Size and date, by which people recognise the better file.
QString descriptionOf(const platform::Node &node, const Captions &captions)
{
    const QString date = QLocale().toString(
        QDateTime::fromMSecsSinceEpoch(node.info.modified / NanosecondsInMillisecond), QLocale::ShortFormat);
    const QString what = node.kind == platform::NodeKind::Folder ? captions.text(Text::ClashFolder)
                                                                 : QLocale().formattedDataSize(node.info.size);
    return what + QStringLiteral(", ") + date;
}

QString questionAbout(const Clash &clash, const Captions &captions)
{
    const QString folder = platform::folderOf(clash.target);
    const QString folderName = platform::nameOf(folder);
    QStringList lines{captions.text(Text::ClashInFolder)
                          .arg(shownInSentence(platform::nameOf(clash.target)),
                              shownInSentence(folderName.isEmpty() ? folder : folderName)),
        QString(), captions.text(Text::ClashPresent).arg(descriptionOf(clash.targetNode, captions)),
        captions.text(Text::ClashComing).arg(descriptionOf(clash.sourceNode, captions))};
    if (clash.canReplace && !clash.isMerge)
        lines << QString() << captions.text(clash.hasTrash ? Text::ClashToTrash : Text::ClashToLose);
    return lines.join(u'\n');
}

} // namespace

ClashDialog::ClashDialog(
    const Captions &captions, const QString &takenName, const QString &presentName, QWidget *parent, Text question)
    : QDialog(parent), m_forAll(new QCheckBox(captions.text(Text::ClashForAll), this)), m_buttons(new QHBoxLayout)
{
    setObjectName(QStringLiteral("clash"));
    arrange(captions, captions.text(question).arg(shownInSentence(takenName), shownInSentence(presentName)));
    addButton(QStringLiteral("Skip"), captions.text(Text::ClashSkip), ClashAnswer::Skip);
    addButton(QStringLiteral("KeepBoth"), captions.text(Text::ClashKeepBoth), ClashAnswer::KeepBoth);
    addButton(QStringLiteral("Stop"), captions.text(Text::ClashStop), ClashAnswer::Stop);
}

ClashDialog::ClashDialog(const Captions &captions, const Clash &clash, QWidget *parent)
    : QDialog(parent), m_forAll(new QCheckBox(captions.text(Text::ClashForAll), this)), m_buttons(new QHBoxLayout)
{
    setObjectName(QStringLiteral("takenName"));
    arrange(captions, questionAbout(clash, captions));
    if (clash.canReplace)
        addButton(QStringLiteral("Replace"), captions.text(clash.isMerge ? Text::ClashMerge : Text::ClashReplace),
            ClashAnswer::Replace);
    addButton(QStringLiteral("Skip"), captions.text(Text::ClashSkip), ClashAnswer::Skip);
    findChild<QPushButton *>(objectName() + QStringLiteral("Skip"))->setFocus();
    addButton(QStringLiteral("KeepBoth"), captions.text(Text::ClashKeepBoth), ClashAnswer::KeepBoth);
    addButton(QStringLiteral("Cancel"), captions.text(Caption::Cancel), ClashAnswer::Stop);
}

void ClashDialog::arrange(const Captions &captions, const QString &question)
{
    setWindowTitle(captions.text(Text::ClashTitle));
    m_forAll->setObjectName(objectName() + QStringLiteral("ForAll"));
    auto *sign = new PlainLabel(this);
    const int size = style()->pixelMetric(QStyle::PM_MessageBoxIconSize, nullptr, this);
    sign->setPixmap(style()->standardIcon(QStyle::SP_MessageBoxWarning, nullptr, this).pixmap(size, size));
    sign->setAlignment(Qt::AlignTop);
    auto *text = new PlainLabel(this);
    text->setObjectName(objectName() + QStringLiteral("Question"));
    text->setWordWrap(true);
    text->setMinimumWidth(fontMetrics().averageCharWidth() * QuestionLetters);
    text->setText(question);
    setAccessibleDescription(question);

    auto *message = new QHBoxLayout;
    message->addWidget(sign);
    message->addWidget(text, 1);
    m_buttons->addStretch();
    auto *rows = new QVBoxLayout(this);
    rows->addLayout(message);
    rows->addWidget(m_forAll);
    rows->addLayout(m_buttons);
    rows->setSizeConstraint(QLayout::SetFixedSize);
}

/// Skip is the default: a hasty Enter overwrites nothing.
void ClashDialog::addButton(const QString &suffix, const QString &text, ClashAnswer answer)
{
    auto *button = new QPushButton(text, this);
    button->setObjectName(objectName() + suffix);
    button->setDefault(answer == ClashAnswer::Skip);
    m_buttons->addWidget(button);
    connect(button, &QPushButton::clicked, this, [this, answer] {
        m_answer = answer;
        accept();
    });
}

ClashDecision ClashDialog::decide()
{
    m_answer = ClashAnswer::Stop;
    exec();
    return {m_answer, m_forAll->isChecked()};
}

} // namespace ravlin
