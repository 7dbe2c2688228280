// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/online/update/versionfile.h"

#include <QString>
#include <QUrl>

/// Addresses of new versions, and which of them to trust.
namespace ravlin {

/// The base address: the environment variable RAVLIN_UPDATE_URL, or else the one built in, which may be empty.
QString updateAddress();

/// The version file at a base address, "https://host.example" with or without a path. NoAddress for an empty text,
/// BadAddress for any other.
UpdateResult<QUrl> versionFileUrl(const QString &baseAddress);

/// The address of a record's file: its location, relative to the version file, plus the file name if it is empty or
/// ends with a slash. Fails with BadLocation if that is not a web address or less secure than the version file's.
UpdateResult<QUrl> downloadUrl(const QUrl &versionFile, const VersionRecord &record);

/// The address of a file's checksum: "NAME.sha256" beside it.
QUrl checksumUrl(const QUrl &file);

/// Returns the name unchanged if it is plain and valid on every system, else BadName. Refuses separators and whatever
/// leads to other folders or drives, device names, hidden files, names that a command would take for an option, control
/// characters and those that disguise what follows, names that Windows would change, and names that are too long. Names
/// are never adjusted: what was offered is what is fetched.
UpdateResult<QString> safeFileName(const QString &name);

} // namespace ravlin
