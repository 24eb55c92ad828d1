#ifndef LUMO_TESTS_SUPPORT_OUTCOMETEXT_H
#define LUMO_TESTS_SUPPORT_OUTCOMETEXT_H

#include "lumo/core/LumoDataMgr.h"
#include "lumo/core/TextEncoding.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <type_traits>

/// What a method returns and puts out, as text. `mark` gives an out-parameter a value of the test's own,
/// which reads "kept" as long as every byte of it is untouched. Of a record the text has the key alone.

constexpr char kMark = 0x55;

template <class Record>
std::enable_if_t<std::is_trivially_copyable_v<Record>> mark(Record& record)
{
    std::memset(static_cast<void*>(&record), kMark, sizeof record);
}

inline void mark(QString& text)
{
    text = "kept";
}

inline void mark(tagVersionInfo& info)
{
    info = {"kept", "kept", "kept", "kept", "kept"};
}

template <class Element>
void mark(QList<Element>& list)
{
    Element own;
    mark(own);
    list.append(own);
}

template <class Key>
void mark(QMap<Key, QString>& map)
{
    Key own;
    mark(own);
    mark(map[own]);
}

inline std::string text(ENUM_RET_TYPE result)
{
    return result == RET_SUCCESS ? "ok" : result == RET_NULL ? "null" : "failed";
}

inline std::string text(bool result)
{
    return result ? "ok" : "failed";
}

inline std::string text(unsigned int key)
{
    return key == 0x55555555 ? "kept" : key == 0xFFFFFFFF ? "none" : std::to_string(key);
}

inline std::string text(const QString& value)
{
    return value.isEmpty() ? "''" : value.toStdString();
}

template <class Record>
std::enable_if_t<std::is_class_v<Record> && std::is_trivially_copyable_v<Record>, std::string>
text(const Record& record)
{
    const char* const bytes = reinterpret_cast<const char*>(&record);
    if (std::all_of(bytes, bytes + sizeof record, [](char byte) { return byte == kMark; }))
        return "kept";
    if constexpr (std::is_same_v<Record, tagCommentInfo>)
        return convertToUtf8(text(record.id) + record.content + "," + record.state);
    else if constexpr (std::is_same_v<Record, tagCtrlPointTable>)
        return text(record.pointID) + (record.ctrlFile ? " with a file" : "");
    else if constexpr (std::is_same_v<Record, tagImageData>)
        return std::to_string(record.recordKind) + "#" +
               (record.recordKind == DATA_TYPE_CTRL_POINT ? text(record.body.ctrlPoint)
                                                          : text(record.body.type.typeID));
    else
        return text(*reinterpret_cast<const unsigned int*>(bytes)); // the first member
}

inline std::string text(const tagVersionInfo& info)
{
    return convertToUtf8(info.text1 + "," + info.text2 + "," + info.text3 + "," + info.text4 + "," +
                         info.text5);
}

template <class Element>
std::string text(const QList<Element>& list)
{
    std::string all;
    for (const Element& element : list)
        all += (all.empty() ? "" : " ") + text(element);
    return all;
}

template <class Key>
std::string text(const QMap<Key, QString>& map)
{
    std::string all;
    for (auto entry = map.begin(); entry != map.end(); ++entry)
        all += text(entry.key()) + "=" + text(entry.value()) + ";";
    return all;
}

#endif
