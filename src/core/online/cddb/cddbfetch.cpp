// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/online/cddb/cddbfetch.h"

#include <utility>

namespace ravlin {

void CddbFetch::get(const QUrl &url, Done done)
{
    m_text.get(url, [done = std::move(done)](const tl::expected<QByteArray, WebFailure> &body) {
        done(LookupResult<QByteArray>(body.map_error(lookupFailureOf)));
    });
}

} // namespace ravlin
