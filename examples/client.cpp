#include <iostream>
#include <lumo/client/Session.h>

int main(int argc, char** argv)
{
    if (argc != 2)
        return 2; // PLACE, such as /disk/folder; the rest is in the environment or the profile
    try {
        const lumo::Session session(lumo::Session::Settings::load());
        const lumo::Catalogue catalogue = session.catalogue();
        const lumo::FolderId folder = catalogue.folderOf(catalogue.find(argv[1]));
        for (const lumo::Entry& file : catalogue.files(folder))
            std::cout << file.name.value_or("(too long)") << '\n';
    } catch (const lumo::Error& error) {
        return (std::cerr << error.what() << '\n', 1);
    }
}
