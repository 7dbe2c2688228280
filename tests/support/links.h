// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <filesystem>

/// Links to files. Both return false where the system has no such links, or not for this user.
namespace ravlin::test {

inline bool hardLink(const QString &path, const QString &link)
{
    std::error_code error;
    std::filesystem::create_hard_link(path.toStdU16String(), link.toStdU16String(), error);
    return !error;
}

inline bool symbolicLink(const QString &target, const QString &link)
{
    std::error_code error;
    std::filesystem::create_symlink(target.toStdU16String(), link.toStdU16String(), error);
    return !error;
}

} // namespace ravlin::test
