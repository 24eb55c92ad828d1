#include "components/wirecall/Closures.h"

#include <gtest/gtest.h>

#include <string>

namespace {

struct Receiver
{
    void receive(int number, const std::string& text, std::string* target)
    {
        *target += std::to_string(number) + text;
    }
};

} // namespace

TEST(MethodClosure, KeepsACopyOfAReferenceAndRunsOnce)
{
    Receiver receiver;
    std::string target;
    std::string text = "kept";
    auto* closure = new wirecall::MethodClosure_Bind3<true, Receiver, int, const std::string&, std::string*>(
        &receiver, &Receiver::receive, 7, text, &target);
    text = "changed";
    closure->Run(); // and deletes itself: the leak check would tell
    EXPECT_EQ(target, "7kept");
}
