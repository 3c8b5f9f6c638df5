// The program as it is, except that it asks this machine for its tip, and that it reads the models
// of TestReader as well: orbisk_with_tips PORT [MODEL]

#include "app/OrbiskApp.h"
#include "online/OnlineAddresses.h"
#include "platform/Platform.h"

#include <string>

int main(int argc, char** argv) {
    orbisk::platform::prepareProcess();
    if (argc < 2 || argc > 3)
        return 1;
    orbisk::tipServer() = {"127.0.0.1", static_cast<unsigned short>(std::stoi(argv[1]))};
    if (argc == 3)
        orbisk::OrbiskApp::openAtStart(orbisk::platform::pathText(argv[2]));
    wxApp::SetInstance(new orbisk::OrbiskApp);
    argv[1] = nullptr;
    int ownArguments = 1;
    return wxEntry(ownArguments, argv);
}
