// Any bytes as the answer of the tip server: decoded, made inert, its links judged.

#include "online/InertPage.h"
#include "online/TipText.h"
#include "support/Fuzzing.h"

#include <algorithm>
#include <cstring>

using namespace orbisk;
using fuzz::require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(bytes), size);
    const std::string tip = decodeTip(text);
    const bool hasFeeds = text.find('\n') != std::string_view::npos;
    require(tip.empty() || hasFeeds || tip.size() == decodedTipSize(text),
            "the size that was foretold is another");
    require(tip.size() <= size, "more was decoded than there was");

    const std::string page = inertPage(tip);
    require(page.size() > tip.size() && std::equal(tip.rbegin(), tip.rend(), page.rbegin()),
            "the page has not the tip at its end");
    require(page.find("Content-Security-Policy") < page.size() - tip.size(),
            "no policy stands before the tip");
    if (mayFollowLink(text))
        require(text.find(':') != std::string_view::npos, "a link without a scheme is followed");
    return 0;
}
