#include <iostream>
#include <lumo/client/Session.h>

/// Lists a folder of the catalogue and fetches it into a local folder.
int main(int argc, char** argv)
{
    if (argc != 3)
        return 2; // PLACE, such as /disk/folder, and a local folder; the rest is in the environment or the
                  // profile
    try {
        const lumo::Session session(lumo::Session::Settings::load());
        const lumo::Catalogue catalogue = session.catalogue();
        const lumo::Entry folder = catalogue.find(argv[1]);
        for (const lumo::Entry& file : catalogue.files(catalogue.folderOf(folder)))
            std::cout << file.name.value_or("(too long)") << '\n';
        const lumo::Transfer::Outcome outcome = session.transfers().get(folder, argv[2], {}).wait();
        if (outcome.done())
            return 0;
        std::cerr << outcome.text << '\n';
    } catch (const lumo::Error& error) {
        std::cerr << error.what() << '\n';
    }
    return 1;
}
