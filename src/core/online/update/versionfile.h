// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/online/update/updatefailure.h"

#include <QByteArrayView>
#include <QString>
#include <QStringView>

#include <vector>

/// What the maker tells about the newest version: a small text on the web, in the format that SequentialReader reads.
namespace ravlin {

/// One file of the new version.
struct VersionRecord
{
    QString fileName;
    QString description;
    QString version;
    QString location; ///< where it is to be had: an address, or a path beside the version file

    bool operator==(const VersionRecord &) const = default;
};

struct VersionFile
{
    static constexpr qsizetype MaximumSize = 64 * 1024; ///< bytes
    static constexpr int MaximumRecords = 51;

    QString version;                    ///< the newest: numbers with full stops between them
    std::vector<VersionRecord> records; ///< in the file's order, without those that have no file name

    /// Reads the header (the version and a field that is not used) and at most MaximumRecords records of five fields,
    /// of which the last is not used. The first error ends the reading; the records before it count. Bytes that don't
    /// begin with such a header, and more than MaximumSize of them, are a failure (BadVersionFile).
    static UpdateResult<VersionFile> parse(QByteArrayView bytes);
};

/// This program's own version: "1.4.0".
QString runningVersion();

/// Whether the offered version comes behind the running one as texts, character by character: 1.10.0 does not come
/// behind 1.9.0.
bool isNewerVersion(const QString &offered, const QString &running);

} // namespace ravlin
