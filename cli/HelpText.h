#ifndef LUMO_CLI_HELPTEXT_H
#define LUMO_CLI_HELPTEXT_H

namespace cli {

// What the help of several commands says.

constexpr const char* kPlaceHelp =
    R"(PLACE is a path such as /disk/folder/file, or an identifier with its kind:
disk:1, folder:12, file:33.)";

constexpr const char* kKindHelp =
    R"(KIND is project, type, photo (frame photograph), sat (satellite image), ads (airborne
three-line image), control (control file), point (control point), dem, dsm, dom or dlg.)";

constexpr const char* kCommandFooter =
    "The options of connection and output, which every command takes: lumo --help";

} // namespace cli

#endif
