#pragma once

#include <string>
#include <string_view>

namespace orbisk {

/// A page (HTML in UTF-8) with a content policy put before it, under which nothing in it acts or is
/// fetched: no scripts, frames, forms, and only those styles and pictures that it carries itself.
std::string inertPage(std::string_view html);

/// Whether a link of a page may be handed to the browser: its address is one of the web ("http:",
/// "https:") or of mail ("mailto:"), and not, say, that of a local file.
bool mayFollowLink(std::string_view address);

} // namespace orbisk
