// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/history/encoding.h"
#include "core/history/history.h"

#include <QByteArray>
#include <QString>

#include <optional>
#include <vector>

namespace ravlin::history {

/// A change on its way into the database.
struct SpooledChange
{
    qint64 number = 0; ///< counts up within a run
    // Its entry; without a time it belongs to none, and is only kept until it is made.
    qint64 entry = 0; ///< in the database; 0: not there yet
    qint64 time = 0;
    Kind kind = Kind::Single;
    QString folder;
    qint64 reverts = 0;           ///< the entry that the entry takes back
    qint64 reverted = 0;          ///< the change that is taken back
    storage::ChangeRecord change; ///< without what is encoded
    EncodedParts encoded;

    // What became of it.
    bool isEnded = false;
    std::optional<storage::ChangeDone> done; ///< none: it was not made
};

/// Where small changes wait for the database, so that it gets many in one transaction: a file of this program alone,
/// which only grows until it is emptied. What append() has written survives the program, not a power cut.
class Spool
{
public:
    /// The file is open and locked as long as the spool is in use.
    explicit Spool(platform::File &file) : m_file(file) {}

    /// Writes what is noted first, in the same step.
    Result<void> append(const SpooledChange &change);
    /// Notes the end of a change for the next append().
    void noteEnd(const SpooledChange &change);
    Result<void> clear();

    /// What a program that ended has left in its file, in the order in which it was appended. What was being appended
    /// when the program ended is left out: its change was not begun.
    static Result<std::vector<SpooledChange>> read(platform::File &file);

private:
    platform::File &m_file;
    qint64 m_size = 0; ///< of the file
    QByteArray m_noted;
};

} // namespace ravlin::history
