// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

#include <array>

namespace ravlin {

class Captions;
class PlainLabel;

struct StreamDetails;

/// Four lines about a file's audio: bit rate, length, frequency and size.
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

    std::array<Line, 4> m_lines{};
};

} // namespace ravlin
