#ifndef LUMO_TRANSFER_LOGTEXTS_H
#define LUMO_TRANSFER_LOGTEXTS_H

/// Messages of the tasks in Chinese, in GBK like all literals of the library, whatever the system code page.
namespace logtexts {

// 源地址获取失败:type(%s) ID(%d)
constexpr char kSourceNotFound[] = "\xd4\xb4\xb5\xd8\xd6\xb7\xbb\xf1\xc8\xa1\xca\xa7\xb0\xdc:type(%s) ID(%d)";
// 源地址错误
constexpr char kSourceWrong[] = "\xd4\xb4\xb5\xd8\xd6\xb7\xb4\xed\xce\xf3";
// 目的地址获取失败:type(%d) ID(%d)
constexpr char kDestinationNotFound[] =
    "\xc4\xbf\xb5\xc4\xb5\xd8\xd6\xb7\xbb\xf1\xc8\xa1\xca\xa7\xb0\xdc:type(%d) ID(%d)";
// 目的地址错误:type(%d) ID(%d)
constexpr char kDestinationWrong[] = "\xc4\xbf\xb5\xc4\xb5\xd8\xd6\xb7\xb4\xed\xce\xf3:type(%d) ID(%d)";
// 存储器信息获取失败:code(%s)
constexpr char kBoxNotFound[] =
    "\xb4\xe6\xb4\xa2\xc6\xf7\xd0\xc5\xcf\xa2\xbb\xf1\xc8\xa1\xca\xa7\xb0\xdc:code(%s)";

} // namespace logtexts

#endif
