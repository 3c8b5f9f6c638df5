#include "online/OnlineAddresses.h"

namespace orbisk {

TipServer& tipServer() {
    static TipServer server{ORBISK_TIP_SERVER};
    return server;
}

std::string& storedUrl() {
    static std::string address = ORBISK_DEFAULT_URL;
    return address;
}

} // namespace orbisk
