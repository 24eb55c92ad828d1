// A header of the application's own, named as one of the library's.
constexpr int kOwnCore = 1;
