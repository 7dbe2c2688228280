// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <functional>

class QLineEdit;

namespace ravlin {

/// Marks a box whose text is not saved: a sign in it, the reason as its tooltip and its description for screen readers,
/// and the focus. The next edit takes the mark away and calls edited.
void markRefused(QLineEdit *box, const QString &reason, const std::function<void()> &edited = {});

} // namespace ravlin
