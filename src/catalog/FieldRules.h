#ifndef LUMO_CATALOG_FIELDRULES_H
#define LUMO_CATALOG_FIELDRULES_H

#include "catalog/NumberText.h"
#include "lumo/core/Identifier.h"
#include "lumo/core/TextEncoding.h"

#include <cstring>
#include <string>

/// How the fields of records are filled from the fields of beans: one function per rule, whose last
/// two arguments are LUMO_FIELD(name) of the bean.
namespace fieldrules {

/// The arguments of a rule: whether `bean` holds the field, and its value.
#define LUMO_FIELD(field) bean.has_##field(), bean.field()

/// An identifier; absent, 0xFFFFFFFF.
inline void key(unsigned int& target, bool present, unsigned int value)
{
    target = present ? value : kNoIdentifier;
}

/// A text in the system code page, in the first `Capacity` bytes of the field; absent, these are
/// zero-filled. A text that does not fit leaves the field as it was.
template <int Capacity, int Size>
void textWithin(char (&target)[Size], bool present, const std::string& value)
{
    static_assert(Capacity <= Size);
    if (present)
        convertToMultibyte(value, target, Capacity);
    else
        std::memset(target, 0, Capacity);
}

/// The same in the whole field.
template <int Size>
void text(char (&target)[Size], bool present, const std::string& value)
{
    textWithin<Size>(target, present, value);
}

/// A number; absent, 0.
inline void number(double& target, bool present, const std::string& value)
{
    target = present ? numbertext::number(value) : 0;
}

constexpr int kLongestCode = 30; ///< in bytes; the texts of the codes are shorter

/// The place of a text among `texts`, which are in GBK; any other and an absent one, -1.
template <std::size_t Count>
void code(int& target, const char* const (&texts)[Count], bool present, const std::string& value)
{
    target = -1;
    if (!present)
        return;
    char local[kLongestCode + 2];
    if (!convertToMultibyte(value, local, sizeof local))
        return; // longer than any of them
    for (std::size_t i = 0; i < Count && target < 0; ++i)
        if (std::strcmp(local, texts[i]) == 0)
            target = static_cast<int>(i);
}

/// The optional numbers of a record. Each call takes the next bit of the presence word: set where the bean
/// has a text that is not empty; clear otherwise, and the number stays as it was.
template <class Word>
class PresenceBits
{
public:
    explicit PresenceBits(Word& word) : m_Word(word) {}

    void number(double& target, bool present, const std::string& value)
    {
        if (take(present && !value.empty()))
            target = numbertext::number(value);
    }

    void count(int& target, bool present, const std::string& value)
    {
        if (take(present && !value.empty()))
            target = numbertext::count(value);
    }

private:
    bool take(bool set)
    {
        const auto bit = static_cast<Word>(Word{1} << m_Next++);
        m_Word = static_cast<Word>(set ? m_Word | bit : m_Word & ~bit);
        return set;
    }

    Word& m_Word;
    unsigned int m_Next = 0;
};

} // namespace fieldrules

#endif
