// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/online/web/webfailure.h"
#include "core/platform/error.h"

#include <QString>

#include <tl/expected.hpp>

namespace ravlin {

/// Why looking for or fetching a new version failed.
enum class UpdateFailureKind
{
    Web,            ///< see UpdateFailure::web
    File,           ///< see UpdateFailure::file
    NoAddress,      ///< this build knows no address: new versions come by the package manager
    BadAddress,     ///< the address of the version file is not one
    BadVersionFile, ///< the answer is not a version file
    BadName,        ///< a file's name is not plain, or not valid on every system
    BadLocation,    ///< a file's address is not one, or less secure than the version file's
    BadChecksum,    ///< a file's checksum is not one
    WrongChecksum,  ///< a file does not match its checksum
};

/// A failure as a value.
struct UpdateFailure
{
    UpdateFailureKind kind = UpdateFailureKind::Web;
    QString detail; ///< plain English, or the server's words
    WebFailureKind web = WebFailureKind::Garbage;
    ErrorCode file = ErrorCode::Io;

    static UpdateFailure ofWeb(const WebFailure &failure);
    static UpdateFailure ofFile(const Error &error);

    /// Whether another file of the same server or in the same folder may still succeed.
    bool isOfOneFile() const;
};

template <typename T>
using UpdateResult = tl::expected<T, UpdateFailure>;

/// One sentence for the user in the interface language, followed by the detail in brackets.
QString updateFailureText(const Captions &captions, const UpdateFailure &failure);

} // namespace ravlin
