// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/tags/mpeg/streamdetails.h"

#include <QWidget>

#include <array>

namespace ravlin {

class Captions;
class PlainLabel;

/// Four lines about a file's audio: bit rate, length, frequency and size. A fifth one only if it is damaged.
class StreamPanel : public QWidget
{
    Q_OBJECT

public:
    explicit StreamPanel(QWidget *parent = nullptr);

    void applyCaptions(const Captions &captions);
    void show(const StreamDetails &details);
    void clear();

private:
    struct Line
    {
        PlainLabel *caption;
        PlainLabel *value;
    };

    void showFault();

    const Captions *m_captions = nullptr; ///< since the first applyCaptions()
    std::array<Line, 4> m_lines{};
    PlainLabel *m_faultLine = nullptr;
    StreamFault m_fault = StreamFault::None;
};

} // namespace ravlin
