// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/online/update/updatefailure.h"

#include <QByteArrayView>
#include <QString>
#include <QStringView>

#include <vector>

/// The maker's announcement of the newest version: a small text on the web in the format of SequentialReader.
namespace ravlin {

/// One file of the new version.
struct VersionRecord
{
    QString fileName;
    QString description;
    QString version;
    QString location; ///< an address, or a path relative to the version file

    bool operator==(const VersionRecord &) const = default;
};

struct VersionFile
{
    static constexpr qsizetype MaximumSize = 64 * 1024; ///< bytes
    static constexpr int MaximumRecords = 51;

    QString version;                    ///< the newest: numbers separated by full stops
    std::vector<VersionRecord> records; ///< in order, without those that have no file name

    /// Parses the header (the version and an unused field) and at most MaximumRecords records of five fields, the last
    /// of which is unused. The first error ends the parsing; the records before it count. Fails with BadVersionFile for
    /// bytes without such a header or longer than MaximumSize.
    static UpdateResult<VersionFile> parse(QByteArrayView bytes);
};

/// Version of this program: "1.4.0".
QString runningVersion();

/// Whether the offered version sorts after the running one as text, character by character: 1.10.0 does not sort after
/// 1.9.0.
bool isNewerVersion(const QString &offered, const QString &running);

} // namespace ravlin
