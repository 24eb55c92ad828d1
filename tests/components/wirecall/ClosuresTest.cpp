#include "lumo/components/wirecall/Closures.h"

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
    using Closure =
        wirecall::MethodClosure_Bind3<true, Receiver*, Receiver, int, const std::string&, std::string*>;
    auto* closure = new Closure(&receiver, &Receiver::receive, 7, text, &target);
    EXPECT_TRUE(closure->deletesItself());
    text = "changed";
    closure->Run(); // and deletes itself: the leak check would tell
    EXPECT_EQ(target, "7kept");
}
