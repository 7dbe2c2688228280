#include "files/ui/outcomedialog.h"

#include "app/idiomas.h"
#include "files/listcolumns.h"

#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>

#include <algorithm>

namespace ravlin {

namespace {

constexpr int CaptionOk = 59;
constexpr int LineLetters = 70; ///< width of the list in average letters
constexpr qsizetype MostLines = 12;

Text headlineOf(OperationKind kind)
{
    switch (kind) {
    case OperationKind::Copy:
        return Text::OutcomeCopy;
    case OperationKind::Move:
        return Text::OutcomeMove;
    case OperationKind::Trash:
    case OperationKind::DeleteForGood:
        return Text::OutcomeDelete;
    case OperationKind::Rename:
        return Text::OutcomeRename;
    case OperationKind::Undo:
        break;
    }
    return Text::OutcomeUndo;
}

QString reasonOf(const FileFailure &failure, const OperationReport &report, const Captions &captions)
{
    const bool isUndo = report.kind == OperationKind::Undo;
    QString reason = isUndo && failure.error.code == ErrorCode::Unsupported ? captions.text(Text::UndoImpossible)
                                                                            : captions.errorText(failure.error.code);
    // Inside a folder: which file it was.
    if (!failure.error.path.isEmpty() && failure.error.path != failure.path)
        reason += QStringLiteral(" (%1)").arg(shownName(failure.error.path));
    return reason;
}

QString line(const QString &path, const QString &reason)
{
    return shownName(path) + QStringLiteral(": ") + reason;
}

} // namespace

QStringList outcomeLines(const OperationReport &report, const Captions &captions)
{
    QStringList lines;
    for (const FileFailure &failure : report.failures)
        lines << line(failure.path, reasonOf(failure, report, captions));
    const QString untouched = captions.text(report.wasStopped ? Text::ErrorCancelled : Text::OutcomeUntouched);
    for (const QString &path : report.notDone)
        lines << line(path, untouched);
    for (const QString &path : report.skipped)
        lines << line(path, captions.text(Text::OutcomeSkipped));
    for (const QString &path : report.lost)
        lines << line(path, captions.text(Text::OutcomeLost));
    return lines;
}

QString outcomeHeadline(const OperationReport &report, const Captions &captions)
{
    const auto notDone = static_cast<qsizetype>(report.failures.size()) + report.notDone.size() + report.skipped.size();
    return captions.text(headlineOf(report.kind)).arg(report.doneCount).arg(notDone);
}

OutcomeDialog::OutcomeDialog(const Captions &captions, const OperationReport &report, QWidget *parent) : QDialog(parent)
{
    setObjectName(QStringLiteral("outcome"));
    setWindowTitle(QStringLiteral("ravlin!"));
    auto *sign = new QLabel(this);
    const int size = style()->pixelMetric(QStyle::PM_MessageBoxIconSize, nullptr, this);
    sign->setPixmap(style()->standardIcon(QStyle::SP_MessageBoxWarning, nullptr, this).pixmap(size, size));
    auto *headline = new QLabel(outcomeHeadline(report, captions), this);
    headline->setObjectName(QStringLiteral("outcomeHeadline"));
    headline->setTextFormat(Qt::PlainText);
    auto *list = new QListWidget(this);
    list->setObjectName(QStringLiteral("outcomeLines"));
    list->setAccessibleName(captions.text(Text::NameOutcome));
    list->addItems(outcomeLines(report, captions));
    list->setWordWrap(true);
    list->setMinimumWidth(fontMetrics().averageCharWidth() * LineLetters);
    const auto lines = std::clamp<qsizetype>(2 * list->count(), 3, MostLines);
    list->setMinimumHeight(static_cast<int>(lines) * fontMetrics().lineSpacing());
    auto *ok = new QPushButton(captions.text(CaptionOk), this);
    ok->setObjectName(QStringLiteral("outcomeOk"));
    ok->setDefault(true);
    ok->setFocus();
    connect(ok, &QPushButton::clicked, this, &QDialog::accept);

    auto *top = new QHBoxLayout;
    top->addWidget(sign);
    top->addWidget(headline, 1);
    auto *rows = new QVBoxLayout(this);
    rows->addLayout(top);
    rows->addWidget(list, 1);
    rows->addWidget(ok, 0, Qt::AlignRight);
    setAccessibleDescription(headline->text());
}

} // namespace ravlin
