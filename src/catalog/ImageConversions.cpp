#include "catalog/CoordRules.h"
#include "catalog/FieldRules.h"
#include "ledger_images.pb.h"
#include "lumo/core/LumoDataMgr.h"

using fieldrules::coordSetting;
using fieldrules::key;
using fieldrules::PresenceBits;
using fieldrules::text;
using ledgerserver::DataSrcAdsBean;
using ledgerserver::DataSrcPhotoBean;
using ledgerserver::DataSrcSatBean;

void CLumoDataMgr::getKFImageDataFromBean(const DataSrcPhotoBean& bean, tagKFImageTable& image)
{
    key(image.imageID, FIELD(image_id));
    key(image.mainFileID, FIELD(main_file_id));
    text(image.imageName, FIELD(image_name));
    text(image.text1, FIELD(text1));
    text(image.text2, FIELD(text2));
    text(image.text3, FIELD(text3));
    text(image.text4, FIELD(text4));
    text(image.text5, FIELD(text5));
    text(image.text6, FIELD(text6));
    text(image.text7, FIELD(text7));
    text(image.text8, FIELD(text8));
    PresenceBits bits(image.presence);
    bits.number(image.value1, FIELD(value1));
    bits.number(image.value2, FIELD(value2));
    bits.number(image.value3, FIELD(value3));
    bits.number(image.value4, FIELD(value4));
    bits.number(image.value5, FIELD(value5));
    bits.number(image.value6, FIELD(value6));
    bits.number(image.value7, FIELD(value7));
    bits.number(image.value8, FIELD(value8));
    bits.number(image.value9, FIELD(value9));
    bits.number(image.value10, FIELD(value10));
    bits.count(image.count1, FIELD(count1));
    bits.count(image.count2, FIELD(count2));
    bits.number(image.value11, FIELD(value11));
    bits.number(image.value12, FIELD(value12));
    bits.number(image.value13, FIELD(value13));
    bits.number(image.value14, FIELD(value14));
    coordSetting(image.coord, bean);
}

void CLumoDataMgr::getSatImageDataFromBean(const DataSrcSatBean& bean, tagSatTable& image)
{
    key(image.imageID, FIELD(image_id));
    key(image.mainFileID, FIELD(main_file_id));
    text(image.imageName, FIELD(image_name));
    text(image.text1, FIELD(text1));
    text(image.text2, FIELD(text2));
    text(image.text3, FIELD(text3));
    text(image.text4, FIELD(text4));
    text(image.text5, FIELD(text5));
    text(image.text6, FIELD(text6));
    text(image.text7, FIELD(text7));
    PresenceBits bits(image.presence);
    bits.number(image.value1, FIELD(value1));
    bits.number(image.value2, FIELD(value2));
    bits.number(image.value3, FIELD(value3));
    bits.number(image.value4, FIELD(value4));
    bits.number(image.value5, FIELD(value5));
    bits.number(image.value6, FIELD(value6));
    bits.count(image.count1, FIELD(count1));
    bits.count(image.count2, FIELD(count2));
    bits.number(image.value7, FIELD(value7));
    bits.number(image.value8, FIELD(value8));
    bits.number(image.value9, FIELD(value9));
    bits.number(image.value10, FIELD(value10));
    bits.number(image.value11, FIELD(value11));
    bits.number(image.value12, FIELD(value12));
    coordSetting(image.coord, bean);
}

void CLumoDataMgr::getAdsImageDataFromBean(const DataSrcAdsBean& bean, tagAdsTable& image)
{
    key(image.imageID, FIELD(image_id));
    key(image.mainFileID, FIELD(main_file_id));
    text(image.imageName, FIELD(image_name));
    text(image.text1, FIELD(text1));
    text(image.text2, FIELD(text2));
    text(image.text3, FIELD(text3));
    text(image.text4, FIELD(text4));
    text(image.text5, FIELD(text5));
    text(image.text6, FIELD(text6));
    text(image.text7, FIELD(text7));
    text(image.text8, FIELD(text8));
    PresenceBits bits(image.presence);
    bits.number(image.value1, FIELD(value1));
    bits.number(image.value2, FIELD(value2));
    bits.number(image.value3, FIELD(value3));
    bits.number(image.value4, FIELD(value4));
    bits.number(image.value5, FIELD(value5));
    bits.number(image.value6, FIELD(value6));
    bits.count(image.count1, FIELD(count1));
    bits.count(image.count2, FIELD(count2));
    coordSetting(image.coord, bean);
}
