// What this program runs on, and how it was started.
#ifndef HXDPANEL_SETUP_H
#define HXDPANEL_SETUP_H

#include <string>
#include <vector>

namespace sandbox {

struct Setup {
    std::string panel;         // folder; empty: the default panel
    bool overDefault = false;  // the folder lies over the default panel
    std::string root;          // folder; empty: the default one, or fresh files
    bool fresh = false;
    std::string driver;
    std::string resultsFile;           // of the machine; "-": standard output
    std::vector<std::string> scripts;  // files of the machine to be read; "-": standard input
    bool history = false;              // keeps a history of what is typed

    // The page in a browser.
    struct Page {
        bool wanted = false;
        int port = 0;                       // 0: any free one
        std::string address = "127.0.0.1";  // of this machine, at which it can be reached
        bool isOpen = false;                // to other machines; then only with a token
    } page;

    // What the instance outside the sandbox tells the one inside, which sees other folders.
    struct Inside {
        bool launched = false;
        int resultsDescriptor = -1;
        int folderDescriptor = -1;  // the folder that the user is in
        int pageDescriptor = -1;    // the listening socket of the page
        std::string machine;        // its name, under which the page may be asked for
        int stopDescriptor = -1;    // becomes readable when this program is to end
        std::string driver;
        std::string historyFolder;
        std::string filesOutside;  // where the panel's files lie on the machine
    } inside;
};

}  // namespace sandbox

#endif
