// Preloaded by tests/mutate into what it tests: shows a changed layout instead of the one that is built in, so that
// nothing is built for it. Of resources with one name the first registered counts, and a library comes before main.
#include <QResource>

namespace {
[[maybe_unused]] const bool registered = QResource::registerResource(qEnvironmentVariable("MUTATED_LAYOUTS"));
} // namespace
