// The program as it is, except that it asks this machine for its tip: orbisk_with_tips PORT

#include "app/OrbiskApp.h"
#include "online/OnlineAddresses.h"
#include "platform/Platform.h"

#include <string>

int main(int argc, char** argv) {
    orbisk::platform::prepareProcess();
    if (argc != 2)
        return 1;
    orbisk::tipServer() = {"127.0.0.1", static_cast<unsigned short>(std::stoi(argv[1]))};
    wxApp::SetInstance(new orbisk::OrbiskApp);
    argv[1] = nullptr;
    int ownArguments = 1;
    return wxEntry(ownArguments, argv);
}
