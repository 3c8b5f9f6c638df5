#include "settings/AppSettings.h"

namespace orbisk {

AppSettings& appSettings() {
    static AppSettings settings;
    return settings;
}

} // namespace orbisk
