#ifndef LUMO_CORE_GBKTEXTS_H
#define LUMO_CORE_GBKTEXTS_H

/// The library's Chinese texts, in GBK whatever the system code page.
namespace gbktexts {

// Messages of the transfer tasks

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

// Texts of the codes of coordinate settings, each at the place of its code
constexpr const char* kDatums[] = {
    "WGS84",
    "\xb1\xb1\xbe\xa9\x35\x34",         // 北京54
    "\xce\xf7\xb0\xb2\x38\x30",         // 西安80
    "\xd6\xd0\xb9\xfa\x32\x30\x30\x30", // 中国2000
    "\xd7\xd4\xb6\xa8\xd2\xe5",         // 自定义
};
constexpr const char* kProjections[] = {
    "\xbe\xad\xce\xb3\xb6\xc8",                                 // 经纬度
    "TM\xcd\xb6\xd3\xb0",                                       // TM投影
    "\xb8\xdf\xcb\xb9\xcd\xb6\xd3\xb0",                         // 高斯投影
    "UTM\xcd\xb6\xd3\xb0",                                      // UTM投影
    "\xc0\xbc\xb2\xa8\xcc\xd8\xb5\xc8\xbd\xc7\xcd\xb6\xd3\xb0", // 兰波特等角投影
    "\xb5\xd8\xd0\xc4\xd6\xb1\xbd\xc7\xd7\xf8\xb1\xea",         // 地心直角坐标
};
constexpr const char* kHemispheres[] = {
    "\xc4\xcf\xb0\xeb\xc7\xf2", // 南半球
    "\xb1\xb1\xb0\xeb\xc7\xf2", // 北半球
};

// Names of types that decide the kind of their records

// 框幅式影像
constexpr char kFramePhotographs[] = "\xbf\xf2\xb7\xf9\xca\xbd\xd3\xb0\xcf\xf1";
// 卫星影像
constexpr char kSatelliteImages[] = "\xce\xc0\xd0\xc7\xd3\xb0\xcf\xf1";
// 航空三线阵影像
constexpr char kThreeLineImages[] = "\xba\xbd\xbf\xd5\xc8\xfd\xcf\xdf\xd5\xf3\xd3\xb0\xcf\xf1";
// 控制点属性
constexpr char kControlPoints[] = "\xbf\xd8\xd6\xc6\xb5\xe3\xca\xf4\xd0\xd4";

} // namespace gbktexts

#endif
