// SPDX-License-Identifier: GPL-3.0-or-later
// Empty: a library wants a source. The target exists for its precompiled headers (tests/CMakeLists.txt).
namespace {
}
