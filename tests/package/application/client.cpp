#include <lumo/client/Session.h>

// Of the client layer alone: it needs neither Qt nor protobuf.
int main()
{
    return lumo::Place("/disk/folder").names().size() == 2 ? 0 : 1;
}
