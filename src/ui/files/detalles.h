// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/history/history.h"

#include <QDialog>

namespace ravlin {

class Captions;

/// The window behind the notice: what an operation did to each file, the values before and after, and why it failed.
class detalles : public QDialog
{
    Q_OBJECT

public:
    /// headline: the notice's text. captions outlives the window.
    detalles(
        const Captions &captions, const QString &headline, const history::Summary &summary, QWidget *parent = nullptr);
};

} // namespace ravlin
