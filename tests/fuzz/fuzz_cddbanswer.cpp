// SPDX-License-Identifier: GPL-3.0-or-later
// A CD database may answer any bytes: parsing the answer ends, and the result is complete or a failure, and safe to
// send in the next query. The same bytes serve as a server's address, a text to search for and an offset text.
#include "core/online/cddb/cddbprotocol.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>

using namespace ravlin;
using namespace ravlin::cddb;

namespace {

void require(bool condition)
{
    if (!condition)
        std::abort();
}

/// One query of ours in the form of an address: four fields, and its content adds none.
void checkQuestion(const QUrl &url, qsizetype fields)
{
    require(url.isValid());
    const QByteArray bytes = url.toEncoded();
    require(bytes.startsWith("http://db.example/~cddb/cddb.cgi?cmd="));
    require(bytes.count('&') == fields - 1 && bytes.count('?') == 1);
    require(std::all_of(bytes.begin(), bytes.end(), [](char byte) { return byte > ' ' && byte < 0x7F; }));
}

void checkMatches(const LookupResult<std::vector<Match>> &matches, const Questions &questions)
{
    if (!matches) {
        require(matches.error().detail.size() <= 200);
        return;
    }
    for (const Match &match : *matches) {
        require(match.discId.size() == 8 && !match.category.isEmpty());
        checkQuestion(questions.read(match), 3);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArrayView bytes(data, qsizetype(size));
    const QString text = QString::fromUtf8(bytes);
    const int level = size > 0 && (data[0] & 1U) != 0 ? NewestLevel : LatinLevel;
    const Questions questions(serverUrl(QStringLiteral("db.example")).value(),
        Hello::of(text.left(100), QStringLiteral("ravlin"), QStringLiteral("1.0")), level);
    checkMatches(readQueryAnswer(bytes), questions);
    checkMatches(readSearchAnswer(bytes), questions);
    readRecordAnswer(bytes);

    if (const LookupResult<QUrl> url = serverUrl(text))
        require(url->isValid() && !url->host().isEmpty() && !url->path().isEmpty());
    const SearchWords words = SearchWords::of(text);
    checkQuestion(questions.search(words), 5);
    checkQuestion(questions.album(words), 3);
    if (const Result<DiscContents> disc = DiscContents::parse(text)) {
        require(disc->trackCount() >= 1 && disc->trackCount() <= MaximumTracks);
        require(disc->discIdText().size() == 8);
        checkQuestion(questions.query(*disc), 3);
    }
    return 0;
}
