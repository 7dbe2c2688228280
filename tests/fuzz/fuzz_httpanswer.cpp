// SPDX-License-Identifier: GPL-3.0-or-later
// A web server may answer any bytes: reading them ends, no split of them changes what is read, and where a redirect
// leads to is an address of the web whose request is one head.
#include "core/online/web/httpanswer.h"
#include "core/online/web/webroute.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>

using namespace ravlin;

namespace {

void require(bool condition)
{
    if (!condition)
        std::abort();
}

/// Returns the content.
QByteArray readInPieces(HttpAnswer &answer, QByteArrayView bytes, qsizetype piece)
{
    QByteArray content;
    for (qsizetype at = 0; at < bytes.size(); at += piece)
        content += answer.take(bytes.sliced(at, std::min(piece, bytes.size() - at)));
    answer.end();
    return content;
}

void checkRedirect(const HttpAnswer &answer)
{
    const QUrl from(QStringLiteral("https://up.example/a/b"));
    const auto goal = redirectGoal(from, answer.field("location"));
    if (!goal) {
        require(goal.error().detail.size() <= 200);
        return;
    }
    require(isWebAddress(*goal) && goal->scheme() == QStringLiteral("https"));
    const QByteArray head = routeTo(*goal, {.ignoresProxy = true}).head;
    require(head.count('\n') == 7 && head.endsWith("\r\n\r\n"));
    require(
        std::all_of(head.begin(), head.end(), [](char byte) { return byte == '\r' || byte == '\n' || byte >= ' '; }));
    require(head.left(head.indexOf('\r')).count(' ') == 2);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArrayView bytes(data, qsizetype(size));
    HttpAnswer whole;
    const QByteArray content = readInPieces(whole, bytes, std::max<qsizetype>(bytes.size(), 1));
    require(whole.state() == HttpAnswer::State::Whole || whole.state() == HttpAnswer::State::Broken);
    require(content.size() <= bytes.size());
    if (whole.state() == HttpAnswer::State::Whole && whole.announcedSize() > 0 && whole.status() == 200)
        require(content.size() == whole.announcedSize());
    require(whole.reason().size() <= 80);
    HttpAnswer pieces;
    require(readInPieces(pieces, bytes, 1) == content);
    require(pieces.state() == whole.state() && pieces.failure().kind == whole.failure().kind);
    checkRedirect(whole);
    return 0;
}
