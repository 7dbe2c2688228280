// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/online/update/versionfile.h"

#include <QString>
#include <QUrl>

/// Where new versions are, and what of that may be believed.
namespace ravlin {

/// The base address: the environment variable RAVLIN_UPDATE_URL, or else what the program was built with.
QString updateAddress();

/// The version file at a base address, "https://host.example" with or without a path; BadAddress for any other text.
UpdateResult<QUrl> versionFileUrl(const QString &baseAddress);

/// Where a record's file is: its location, taken as beside the version file where it is no whole address, with the
/// file's name behind it where it ends with a slash or is empty. Never less secure than the version file's address.
/// BadLocation for what is no address of the web.
UpdateResult<QUrl> downloadUrl(const QUrl &versionFile, const VersionRecord &record);

/// Where the checksum of a file is: "NAME.sha256" beside it.
QUrl checksumUrl(const QUrl &file);

/// The name as it came from the network, if it is plain and fit for every system; else BadName. Refused are separators
/// and what leads to other folders or drives, names of devices, hidden files, control characters and those that
/// disguise what follows, names that Windows would change, and such as are too long. No name is made fit: what was
/// offered is what is fetched.
UpdateResult<QString> safeFileName(const QString &name);

} // namespace ravlin
