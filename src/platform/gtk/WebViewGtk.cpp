#include "platform/WebView.h"

#include <wx/webview.h>

#include <string_view>

// The few functions wanted of the web engine itself, which the toolkit brings along without its
// headers.
extern "C" {
void webkit_settings_set_enable_dns_prefetching(void* settings, int enabled);
void webkit_settings_set_enable_html5_database(void* settings, int enabled);
void webkit_settings_set_enable_html5_local_storage(void* settings, int enabled);
void webkit_settings_set_enable_javascript(void* settings, int enabled);
void webkit_settings_set_enable_javascript_markup(void* settings, int enabled);
void webkit_settings_set_enable_media(void* settings, int enabled);
void webkit_settings_set_enable_webgl(void* settings, int enabled);
void* webkit_network_proxy_settings_new(const char* defaultUri, const char* const* ignoredHosts);
void webkit_network_proxy_settings_free(void* settings);
void* webkit_navigation_policy_decision_get_navigation_action(void* decision);
int webkit_navigation_action_get_navigation_type(void* action);
void* webkit_navigation_action_get_request(void* action);
void webkit_policy_decision_ignore(void* decision);
const char* webkit_uri_request_get_uri(void* request);
void* webkit_web_context_get_website_data_manager(void* context);
void webkit_web_context_set_cache_model(void* context, int model);
void* webkit_web_view_get_context(void* view);
void* webkit_web_view_get_settings(void* view);
void webkit_website_data_manager_set_network_proxy_settings(void* manager, int mode,
                                                            void* settings);
unsigned long g_signal_connect_data(void* instance, const char* signal, void (*handler)(),
                                    void* data, void (*destroy)(void*, void*), int flags);
}

namespace orbisk::platform {

namespace {

constexpr int decisionOnNavigation = 0;
constexpr int decisionOnNewWindow = 1;
constexpr int navigationByLink = 0;
constexpr int customProxy = 2;
constexpr int cacheNothing = 0;
/// Nobody listens at this port of the machine itself, so whatever connection the engine tries to
/// make, for reasons of its own even, is refused.
constexpr const char* deadProxy = "http://127.0.0.1:9";
/// What a page is called that was handed to the view as a text.
constexpr std::string_view ownPage = "about:blank";

using Follower = void (*)();

/// Called by the engine before it goes anywhere. @return whether the matter is settled.
int decideNavigation(void*, void* decision, int type, void* follow) {
    if (type != decisionOnNavigation && type != decisionOnNewWindow)
        return 0;
    void* action = webkit_navigation_policy_decision_get_navigation_action(decision);
    const char* address = webkit_uri_request_get_uri(webkit_navigation_action_get_request(action));
    const std::string_view target = address ? address : "";
    if (type == decisionOnNavigation && target.substr(0, ownPage.size()) == ownPage)
        return 0;
    webkit_policy_decision_ignore(decision);
    if (webkit_navigation_action_get_navigation_type(action) == navigationByLink)
        reinterpret_cast<LinkFollower>(follow)(wxString::FromUTF8(target.data(), target.size()));
    return 1;
}

void turnFeaturesOff(void* view) {
    void* settings = webkit_web_view_get_settings(view);
    for (const auto enable :
         {webkit_settings_set_enable_dns_prefetching, webkit_settings_set_enable_html5_database,
          webkit_settings_set_enable_html5_local_storage, webkit_settings_set_enable_javascript,
          webkit_settings_set_enable_javascript_markup, webkit_settings_set_enable_media,
          webkit_settings_set_enable_webgl})
        enable(settings, 0);
}

void disconnect(void* view) {
    void* context = webkit_web_view_get_context(view);
    webkit_web_context_set_cache_model(context, cacheNothing);
    void* proxy = webkit_network_proxy_settings_new(deadProxy, nullptr);
    webkit_website_data_manager_set_network_proxy_settings(
        webkit_web_context_get_website_data_manager(context), customProxy, proxy);
    webkit_network_proxy_settings_free(proxy);
}

} // namespace

bool makeInert(wxWebView& view, LinkFollower follow) {
    void* engine = view.GetNativeBackend();
    if (!engine)
        return false;
    turnFeaturesOff(engine);
    disconnect(engine);
    view.EnableContextMenu(false);
    // A window of its own is asked for by a click only, and the toolkit refuses to open one.
    view.Bind(wxEVT_WEBVIEW_NEWWINDOW, [follow](wxWebViewEvent& event) { follow(event.GetURL()); });
    g_signal_connect_data(engine, "decide-policy", reinterpret_cast<Follower>(decideNavigation),
                          reinterpret_cast<void*>(follow), nullptr, 0);
    return true;
}

} // namespace orbisk::platform
