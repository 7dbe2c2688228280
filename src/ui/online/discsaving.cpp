// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/online/discsaving.h"

#include "core/app/idiomas.h"
#include "core/app/pageowner.h"
#include "ui/controls/outcomebox.h"
#include "ui/controls/plain/messagebox.h"

namespace ravlin {

DiscSaving::DiscSaving(
    PageOwner &owner, TagStore &tagStore, const ProgramState &state, const Captions &captions, QWidget *window)
    : QObject(window), m_owner(owner), m_tagStore(tagStore), m_state(state), m_captions(captions), m_window(window)
{
}

std::optional<qsizetype> DiscSaving::save(const std::vector<DiscFile> &files, const DiscFields &disc)
{
    BatchOutcome outcome;
    m_isUnderWay = true;
    const bool ran = run(files, disc, outcome);
    m_isUnderWay = false;
    if (!ran)
        return {};
    m_owner.refreshList();
    tellOutcome(outcome, files);
    return outcome.doneCount();
}

bool DiscSaving::run(const std::vector<DiscFile> &files, const DiscFields &disc, BatchOutcome &outcome)
{
    const int count = static_cast<int>(files.size());
    return m_owner.runRecorded(history::Kind::Lookup, count, [&](const ProgressReport &progress) {
        // Comes from the thread that saves.
        const auto show = [&](const Progress &now) {
            progress(now);
            QMetaObject::invokeMethod(
                this, [this, done = static_cast<int>(now.done), count] { tellAdvance(done, count); },
                Qt::QueuedConnection);
        };
        outcome = saveDisc(files, disc, m_tagStore, m_state, show);
        QStringList paths;
        for (const DiscFile &file : files)
            paths << file.path;
        return failuresOf(paths, outcome);
    });
}

/// Drops reports that arrive after the end.
void DiscSaving::tellAdvance(int done, int count)
{
    if (m_isUnderWay)
        Q_EMIT advanced(done, count);
}

void DiscSaving::tellOutcome(const BatchOutcome &outcome, const std::vector<DiscFile> &files)
{
    const QStringList lines = notSavedLines(m_captions, outcome, files);
    if (lines.isEmpty())
        return;
    const QString headline = m_captions.text(Text::OutcomeSave).arg(outcome.doneCount()).arg(lines.size());
    QDialog *box = nullptr;
    if (outcome.hasError(ErrorCode::LowSpace)) {
        auto *refusal = new MessageBox(MessageBox::Critical, m_window->windowTitle(),
            m_captions.errorText(ErrorCode::LowSpace), MessageBox::Ok, m_window);
        refusal->setObjectName(QStringLiteral("error"));
        refusal->setFurtherText(headline);
        box = refusal;
    } else {
        box = new OutcomeBox(m_captions, headline, lines, m_window);
    }
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->open();
}

} // namespace ravlin
