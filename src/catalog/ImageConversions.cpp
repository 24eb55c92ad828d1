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
    key(image.imageID, LUMO_FIELD(image_id));
    key(image.mainFileID, LUMO_FIELD(main_file_id));
    text(image.imageName, LUMO_FIELD(image_name));
    text(image.text1, LUMO_FIELD(text1));
    text(image.text2, LUMO_FIELD(text2));
    text(image.text3, LUMO_FIELD(text3));
    text(image.text4, LUMO_FIELD(text4));
    text(image.text5, LUMO_FIELD(text5));
    text(image.text6, LUMO_FIELD(text6));
    text(image.text7, LUMO_FIELD(text7));
    text(image.text8, LUMO_FIELD(text8));
    PresenceBits bits(image.presence);
    bits.number(image.value1, LUMO_FIELD(value1));
    bits.number(image.value2, LUMO_FIELD(value2));
    bits.number(image.value3, LUMO_FIELD(value3));
    bits.number(image.value4, LUMO_FIELD(value4));
    bits.number(image.value5, LUMO_FIELD(value5));
    bits.number(image.value6, LUMO_FIELD(value6));
    bits.number(image.value7, LUMO_FIELD(value7));
    bits.number(image.value8, LUMO_FIELD(value8));
    bits.number(image.value9, LUMO_FIELD(value9));
    bits.number(image.value10, LUMO_FIELD(value10));
    bits.count(image.count1, LUMO_FIELD(count1));
    bits.count(image.count2, LUMO_FIELD(count2));
    bits.number(image.value11, LUMO_FIELD(value11));
    bits.number(image.value12, LUMO_FIELD(value12));
    bits.number(image.value13, LUMO_FIELD(value13));
    bits.number(image.value14, LUMO_FIELD(value14));
    coordSetting(image.coord, bean);
}

void CLumoDataMgr::getSatImageDataFromBean(const DataSrcSatBean& bean, tagSatTable& image)
{
    key(image.imageID, LUMO_FIELD(image_id));
    key(image.mainFileID, LUMO_FIELD(main_file_id));
    text(image.imageName, LUMO_FIELD(image_name));
    text(image.text1, LUMO_FIELD(text1));
    text(image.text2, LUMO_FIELD(text2));
    text(image.text3, LUMO_FIELD(text3));
    text(image.text4, LUMO_FIELD(text4));
    text(image.text5, LUMO_FIELD(text5));
    text(image.text6, LUMO_FIELD(text6));
    text(image.text7, LUMO_FIELD(text7));
    PresenceBits bits(image.presence);
    bits.number(image.value1, LUMO_FIELD(value1));
    bits.number(image.value2, LUMO_FIELD(value2));
    bits.number(image.value3, LUMO_FIELD(value3));
    bits.number(image.value4, LUMO_FIELD(value4));
    bits.number(image.value5, LUMO_FIELD(value5));
    bits.number(image.value6, LUMO_FIELD(value6));
    bits.count(image.count1, LUMO_FIELD(count1));
    bits.count(image.count2, LUMO_FIELD(count2));
    bits.number(image.value7, LUMO_FIELD(value7));
    bits.number(image.value8, LUMO_FIELD(value8));
    bits.number(image.value9, LUMO_FIELD(value9));
    bits.number(image.value10, LUMO_FIELD(value10));
    bits.number(image.value11, LUMO_FIELD(value11));
    bits.number(image.value12, LUMO_FIELD(value12));
    coordSetting(image.coord, bean);
}

void CLumoDataMgr::getAdsImageDataFromBean(const DataSrcAdsBean& bean, tagAdsTable& image)
{
    key(image.imageID, LUMO_FIELD(image_id));
    key(image.mainFileID, LUMO_FIELD(main_file_id));
    text(image.imageName, LUMO_FIELD(image_name));
    text(image.text1, LUMO_FIELD(text1));
    text(image.text2, LUMO_FIELD(text2));
    text(image.text3, LUMO_FIELD(text3));
    text(image.text4, LUMO_FIELD(text4));
    text(image.text5, LUMO_FIELD(text5));
    text(image.text6, LUMO_FIELD(text6));
    text(image.text7, LUMO_FIELD(text7));
    text(image.text8, LUMO_FIELD(text8));
    PresenceBits bits(image.presence);
    bits.number(image.value1, LUMO_FIELD(value1));
    bits.number(image.value2, LUMO_FIELD(value2));
    bits.number(image.value3, LUMO_FIELD(value3));
    bits.number(image.value4, LUMO_FIELD(value4));
    bits.number(image.value5, LUMO_FIELD(value5));
    bits.number(image.value6, LUMO_FIELD(value6));
    bits.count(image.count1, LUMO_FIELD(count1));
    bits.count(image.count2, LUMO_FIELD(count2));
    coordSetting(image.coord, bean);
}
