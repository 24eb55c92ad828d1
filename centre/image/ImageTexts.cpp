#include "centre/image/ImageTexts.h"

#include "centre/base/Text.h"

#include <google/protobuf/util/json_util.h>

#include <array>
#include <charconv>

namespace centre {

namespace {

// What the records of the clients hold, in bytes.
constexpr std::size_t kLongestFormat = 31;
constexpr std::size_t kLongestGeoreference = 63;

std::string rounded(double value, int digits)
{
    std::array<char, 512> text{};
    char* const end = std::to_chars(text.begin(), text.end(), value, std::chars_format::fixed, digits).ptr;
    return {text.begin(), end};
}

template <class NumberText>
std::string boundsText(const image::Bounds& bounds, NumberText number)
{
    return " west " + number(bounds.west()) + " south " + number(bounds.south()) + " east " +
           number(bounds.east()) + " north " + number(bounds.north());
}

} // namespace

std::string formatText(const image::Image& image)
{
    const bool plain = image.driver() == "GTiff" && !image.has_reference_system();
    std::string text = (plain ? "TIFF" : image.driver()) + " " + std::to_string(image.width()) + "x" +
                       std::to_string(image.height()) + "x" + std::to_string(image.bands_size());
    const std::string type = image.bands_size() > 0 ? image.bands(0).type() : "Byte";
    if (type != "Byte" && text.size() + 1 + type.size() <= kLongestFormat)
        text += " " + type;
    return text;
}

std::string georeferenceText(const image::Image& image)
{
    if (!image.has_reference_system() || !image.has_bounds())
        return {};
    std::string text = image.reference_system() + boundsText(image.bounds(), numberText);
    for (int digits = 9; digits >= 0 && text.size() > kLongestGeoreference; --digits)
        text = image.reference_system() +
               boundsText(image.bounds(), [digits](double value) { return rounded(value, digits); });
    return text;
}

std::vector<std::pair<std::string, std::string>> searchTexts(const image::Image& image)
{
    std::vector<std::pair<std::string, std::string>> texts;
    if (!image.sensor().empty())
        texts.emplace_back("sensor", image.sensor());
    if (!image.date().empty())
        texts.emplace_back("date", image.date());
    if (image.has_geographic_bounds()) {
        const image::Bounds& bounds = image.geographic_bounds();
        texts.emplace_back("west", numberText(bounds.west()));
        texts.emplace_back("south", numberText(bounds.south()));
        texts.emplace_back("east", numberText(bounds.east()));
        texts.emplace_back("north", numberText(bounds.north()));
    }
    return texts;
}

std::string jsonText(const image::Image& image)
{
    std::string text;
    static_cast<void>(google::protobuf::util::MessageToJsonString(image, &text)); // its texts are UTF-8
    return text;
}

image::Image imageOf(const std::string& json)
{
    image::Image image;
    if (!google::protobuf::util::JsonStringToMessage(json, &image).ok())
        image.Clear();
    return image;
}

} // namespace centre
