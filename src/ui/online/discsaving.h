// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/online/cddb/discapply.h"

#include <QObject>

#include <optional>
#include <vector>

class QWidget;

namespace ravlin {

class Captions;
class PageOwner;

/// Saves a disc's data into the tags of its files, with the progress shown, and says in a box over the window which
/// files could not be saved.
class DiscSaving : public QObject
{
    Q_OBJECT

public:
    /// The window owns it.
    DiscSaving(
        PageOwner &owner, TagStore &tagStore, const ProgramState &state, const Captions &captions, QWidget *window);

    bool isUnderWay() const { return m_isUnderWay; }
    /// Returns when the files have been saved, with their number, and the main list shows them. Nothing, and nothing
    /// done, while other work is under way.
    std::optional<qsizetype> save(const std::vector<DiscFile> &files, const DiscFields &disc);

Q_SIGNALS:
    /// Comes during save() only.
    void advanced(int done, int count);

private:
    bool run(const std::vector<DiscFile> &files, const DiscFields &disc, BatchOutcome &outcome);
    void tellAdvance(int done, int count);
    void tellOutcome(const BatchOutcome &outcome, const std::vector<DiscFile> &files);

    PageOwner &m_owner;
    TagStore &m_tagStore;
    const ProgramState &m_state;
    const Captions &m_captions;
    QWidget *m_window;
    bool m_isUnderWay = false;
};

} // namespace ravlin
