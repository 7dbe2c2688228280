// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Compiled once for all test programs. A source still includes what it uses itself.
#include <QtTest/QtTest>

#include <algorithm>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <vector>

#if __has_include(<QtWidgets/QtWidgets>) && defined(QT_WIDGETS_LIB)
#include <QtWidgets/QtWidgets>
#endif
