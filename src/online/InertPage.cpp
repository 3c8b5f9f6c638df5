#include "online/InertPage.h"

#include <algorithm>
#include <array>
#include <cctype>

namespace orbisk {

namespace {

constexpr std::string_view policy =
    "<!DOCTYPE html><meta charset=\"utf-8\">"
    "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; "
    "style-src 'unsafe-inline'; img-src data:; form-action 'none'; base-uri 'none'\">"
    "<meta http-equiv=\"x-dns-prefetch-control\" content=\"off\">";
constexpr std::array<std::string_view, 3> followedSchemes = {"http:", "https:", "mailto:"};

bool equalWithoutCase(char a, char b) {
    return std::tolower(static_cast<unsigned char>(a)) ==
           std::tolower(static_cast<unsigned char>(b));
}

} // namespace

std::string inertPage(std::string_view html) {
    std::string page(policy);
    page += html;
    return page;
}

bool mayFollowLink(std::string_view address) {
    return std::any_of(
        followedSchemes.begin(), followedSchemes.end(), [address](std::string_view scheme) {
            return address.size() > scheme.size() &&
                   std::equal(scheme.begin(), scheme.end(), address.begin(), equalWithoutCase);
        });
}

} // namespace orbisk
