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

/// Saves a disc's data into the tags of its files with progress, and lists the files that could not be saved in a box
/// over the window.
class DiscSaving : public QObject
{
    Q_OBJECT

public:
    /// Owned by the window.
    DiscSaving(
        PageOwner &owner, TagStore &tagStore, const ProgramState &state, const Captions &captions, QWidget *window);

    bool isUnderWay() const { return m_isUnderWay; }
    /// Saves, refreshes the main list and returns the number of files saved. Returns nothing, having done nothing,
    /// while other work is under way.
    std::optional<qsizetype> save(const std::vector<DiscFile> &files, const DiscFields &disc);

Q_SIGNALS:
    /// Emitted only during save().
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
