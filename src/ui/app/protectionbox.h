// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/app/programstate.h"
#include "core/app/texttable.h"

#include <QGroupBox>

#include <array>

class QCheckBox;

namespace ravlin {

class Captions;

/// The part of the options dialog that chooses the protections: what keeps a slip of the user from costing much. None
/// is on unless the user has chosen it.
class ProtectionBox : public QGroupBox
{
    Q_OBJECT

public:
    explicit ProtectionBox(QWidget *parent = nullptr);

    void show(const FurtherOptions &options);
    /// Ticks all of them, for the user to agree.
    void offer();
    /// Puts the choices into the options.
    void choose(FurtherOptions &options) const;
    void applyCaptions(const Captions &captions);

private:
    struct Protection
    {
        bool FurtherOptions::*option;
        Text caption;
        Text tip;
        QCheckBox *box;
    };
    std::array<Protection, 4> m_protections;
};

} // namespace ravlin
