// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/tags/record/tagrecord.h"

#include <QString>

#include <optional>

namespace ravlin {

/// What was typed for a file and not saved.
struct UnsavedEdits
{
    QString path;
    TagRecord record; ///< the seven texts

    bool operator==(const UnsavedEdits &) const = default;

    /// For the settings: Latin letters on one line.
    QString toText() const;
    /// Nothing for a text that toText() has not made.
    static std::optional<UnsavedEdits> fromText(const QString &text);
};

} // namespace ravlin
