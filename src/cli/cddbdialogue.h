// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/online/cddb/ufreedb.h"

#include <QCoreApplication>

#include <functional>
#include <memory>

namespace ravlin::cli {

/// The CD-database component for a program without an event loop: each operation returns when it has ended. One at a
/// time in a program.
class CddbDialogue
{
    Q_DISABLE_COPY_MOVE(CddbDialogue)

public:
    enum class Ending
    {
        NotFound,
        ChoiceOffered,
        RecordRead,
        Failed ///< see failure()
    };

    CddbDialogue();
    ~CddbDialogue();

    uFREEDB &freedb() { return *m_freedb; }
    /// Begins an operation of the component, which must be one that ends with a signal, and waits for its end.
    Ending wait(const std::function<void(uFREEDB &)> &begin);
    const LookupFailure &failure() const { return m_failure; }

private:
    int m_argumentCount = 1;
    char m_name[11] = "ravlin-cli";
    char *m_arguments[2] = {m_name, nullptr};
    std::unique_ptr<QCoreApplication> m_application;
    std::unique_ptr<uFREEDB> m_freedb;
    LookupFailure m_failure;
};

} // namespace ravlin::cli
