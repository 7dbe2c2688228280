// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/files/takennamedialog.h"

#include "core/app/idiomas.h"
#include "core/files/list/listcolumns.h"
#include "core/platform/path.h"

#include <QCheckBox>
#include <QDateTime>
#include <QLabel>
#include <QLocale>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>

namespace ravlin {

namespace {

constexpr int QuestionLetters = 50; ///< width of the question in average letters
constexpr qint64 NanosecondsInMillisecond = 1'000'000;

/// Size and date of a file, by which people tell which one is the better.
QString descriptionOf(const platform::Node &node, const Captions &captions)
{
    const QString date = QLocale().toString(
        QDateTime::fromMSecsSinceEpoch(node.info.modified / NanosecondsInMillisecond), QLocale::ShortFormat);
    const QString what = node.kind == platform::NodeKind::Folder ? captions.text(Text::ClashFolder)
                                                                 : QLocale().formattedDataSize(node.info.size);
    return what + QStringLiteral(", ") + date;
}

QLabel *warningSign(QWidget *parent)
{
    auto *sign = new QLabel(parent);
    const int size = parent->style()->pixelMetric(QStyle::PM_MessageBoxIconSize, nullptr, parent);
    sign->setPixmap(parent->style()->standardIcon(QStyle::SP_MessageBoxWarning, nullptr, parent).pixmap(size, size));
    sign->setAlignment(Qt::AlignTop);
    return sign;
}

} // namespace

TakenNameDialog::TakenNameDialog(const Captions &captions, const Clash &clash, QWidget *parent)
    : QDialog(parent), m_forAll(new QCheckBox(captions.text(Text::ClashForAll), this)), m_buttons(new QHBoxLayout)
{
    setObjectName(QStringLiteral("takenName"));
    setWindowTitle(captions.text(Text::ClashTitle));
    const QString folder = platform::folderOf(clash.target);
    const QString folderName = platform::nameOf(folder);
    auto *question = new QLabel(this);
    question->setObjectName(QStringLiteral("takenNameQuestion"));
    question->setTextFormat(Qt::PlainText);
    question->setWordWrap(true);
    question->setMinimumWidth(fontMetrics().averageCharWidth() * QuestionLetters);
    const QStringList lines{
        captions.text(Text::ClashInFolder)
            .arg(shownName(platform::nameOf(clash.target)), shownName(folderName.isEmpty() ? folder : folderName)),
        QString(), captions.text(Text::ClashPresent).arg(descriptionOf(clash.targetNode, captions)),
        captions.text(Text::ClashComing).arg(descriptionOf(clash.sourceNode, captions))};
    question->setText(lines.join(u'\n'));
    m_forAll->setObjectName(QStringLiteral("takenNameForAll"));

    auto *message = new QHBoxLayout;
    message->addWidget(warningSign(this));
    message->addWidget(question, 1);
    m_buttons->addStretch();
    if (clash.canReplace)
        addReply("takenNameReplace", captions.text(clash.isMerge ? Text::ClashMerge : Text::ClashReplace),
            ClashReply::Replace);
    addReply("takenNameSkip", captions.text(Text::ClashSkip), ClashReply::Skip);
    addReply("takenNameKeepBoth", captions.text(Text::ClashKeepBoth), ClashReply::KeepBoth);
    connect(
        addButton("takenNameCancel", captions.text(Caption::Cancel)), &QPushButton::clicked, this, &QDialog::reject);
    auto *rows = new QVBoxLayout(this);
    rows->addLayout(message);
    rows->addWidget(m_forAll);
    rows->addLayout(m_buttons);
    rows->setSizeConstraint(QLayout::SetFixedSize);
    setAccessibleDescription(question->text());
}

QPushButton *TakenNameDialog::addButton(const char *name, const QString &text)
{
    auto *button = new QPushButton(text, this);
    button->setObjectName(QLatin1String(name));
    m_buttons->addWidget(button);
    return button;
}

/// Nothing is overwritten by a hasty Enter: the button for that is to skip.
void TakenNameDialog::addReply(const char *name, const QString &text, ClashReply reply)
{
    QPushButton *button = addButton(name, text);
    button->setDefault(reply == ClashReply::Skip);
    if (reply == ClashReply::Skip)
        button->setFocus();
    connect(button, &QPushButton::clicked, this, [this, reply] {
        m_reply = reply;
        accept();
    });
}

std::optional<ClashDecision> TakenNameDialog::decide()
{
    m_reply.reset();
    exec();
    if (!m_reply)
        return std::nullopt;
    return ClashDecision{*m_reply, m_forAll->isChecked()};
}

} // namespace ravlin
