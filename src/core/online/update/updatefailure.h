// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/online/web/webfailure.h"
#include "core/platform/error.h"

#include <QString>

#include <tl/expected.hpp>

namespace ravlin {

/// Why a new version could not be looked for or fetched, for callers to branch on.
enum class UpdateFailureKind
{
    Web,            ///< see UpdateFailure::web
    File,           ///< see UpdateFailure::file
    BadAddress,     ///< the address to look for new versions at is none
    BadVersionFile, ///< the answer is no version file
    BadName,        ///< a file's name is not a plain one, or one that is not fit for every system
    BadLocation,    ///< a file's address is none, or less secure than the version file's
    BadChecksum,    ///< what stands beside a file as its checksum is none
    WrongChecksum,  ///< a file is not what its checksum says
};

/// A failure as a value.
struct UpdateFailure
{
    UpdateFailureKind kind = UpdateFailureKind::Web;
    QString detail; ///< in plain English or in the server's words
    WebFailureKind web = WebFailureKind::Garbage;
    ErrorCode file = ErrorCode::Io;

    static UpdateFailure ofWeb(const WebFailure &failure);
    static UpdateFailure ofFile(const Error &error);

    /// Whether nothing in it speaks against another file of the same server, or in the same folder.
    bool isOfOneFile() const;
};

template <typename T>
using UpdateResult = tl::expected<T, UpdateFailure>;

/// One sentence for the user in the interface language, the detail behind it in brackets.
QString updateFailureText(const Captions &captions, const UpdateFailure &failure);

} // namespace ravlin
