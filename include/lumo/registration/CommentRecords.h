#ifndef LUMO_REGISTRATION_COMMENTRECORDS_H
#define LUMO_REGISTRATION_COMMENTRECORDS_H

/// A comment or an image comment. Texts are NUL-terminated and in the system code page
/// (lumo/components/platform/CodePage.h); one takes at most 62 bytes, and a longer one leaves its array as it
/// was.
struct tagCommentInfo
{
    unsigned int id; ///< 0xFFFFFFFF for none
    char content[64];
    char state[64];
};

#endif
