// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/online/web/webfailure.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QHash>
#include <QString>

/// The framing of HTTP/1.1: where an answer ends, and whether it did.
namespace ravlin {

/// Reads the answer to one GET request from the bytes of its connection, which carries nothing else. Knows no network
/// and no addresses. Strict: an answer that two readers could understand in different ways is broken, and so is one
/// with a head that is longer than MaximumHead. Content is handed over as it arrives; whether it was all of it is known
/// only when the answer is Whole.
class HttpAnswer
{
public:
    static constexpr qsizetype MaximumHead = 64 * 1024; ///< bytes, informational heads and trailers included
    static constexpr int MaximumFields = 200;

    enum class State
    {
        Head,    ///< the head is not there yet
        Content, ///< the head is there; its status may be anything
        Whole,
        Broken, ///< see failure()
    };

    /// Takes what arrived and returns the content in it. Whatever follows the end is dropped.
    QByteArray take(QByteArrayView bytes);
    /// The connection has ended: the answer is Whole or Broken from now on.
    void end();

    State state() const { return m_state; }
    /// Why the answer is Broken: Garbage or Incomplete, with a detail in plain English.
    const WebFailure &failure() const { return m_failure; }

    int status() const { return m_status; } ///< 0 before there is a head
    QString reason() const { return m_reason; }
    /// A field's value by its name in lower case, empty if there is none; several are joined by commas.
    QByteArray field(const QByteArray &name) const { return m_fields.value(name); }
    bool hasField(const QByteArray &name) const { return m_fields.contains(name); }
    /// Bytes; -1 if not announced.
    qint64 announcedSize() const { return m_size; }
    /// Whether the end of the content is marked by its size or its chunks. If not, it ends with the connection.
    bool isEndMarked() const { return m_size >= 0 || m_isChunked; }

private:
    /// What comes next.
    enum class Part
    {
        StatusLine,
        Fields,
        Content,   ///< m_left bytes, or all that comes
        ChunkSize, ///< a line
        ChunkEnd,  ///< the end of line after a chunk
        Trailers,
    };

    bool takeLine(QByteArrayView &bytes);
    void readLine();
    void readStatusLine();
    void readField();
    void endHead();
    void readFraming();
    void readChunkSize();
    void takeContent(QByteArrayView &bytes, QByteArray &content);
    void breakOff(WebFailureKind kind, const QString &detail);

    State m_state = State::Head;
    Part m_part = Part::StatusLine;
    QByteArray m_line; ///< without its end; partial until that is there
    qsizetype m_headSize = 0;
    int m_fieldCount = 0;
    int m_status = 0;
    QString m_reason;
    QHash<QByteArray, QByteArray> m_fields;
    qint64 m_size = -1;
    bool m_isChunked = false;
    qint64 m_left = -1; ///< bytes of this chunk or of the content; -1: until the connection ends
    WebFailure m_failure;
};

} // namespace ravlin
