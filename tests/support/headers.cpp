// Carries the precompiled headers (tests/CMakeLists.txt).
namespace {
}
