// mossbit-render IN.mossbit OUT.wav: a project file in, a WAV file out, no window.

#include "Platform/PosixAtomicFile.h"
#include "Services/ErrorDescription.h"
#include "Services/ProjectStore.h"
#include "Services/WAVExporter.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>

namespace {

/// One line on standard error, whatever line breaks a file name brings along.
int fail(std::string message) {
    std::ranges::replace(message, '\n', ' ');
    std::fprintf(stderr, "mossbit-render: %s\n", message.c_str());
    return EXIT_FAILURE;
}

int render(const char* in, const char* out) {
    std::error_code ignored;
    if (std::filesystem::equivalent(in, out, ignored))
        return fail(std::string(out) + ": the song and the sound would be the same file");
    const char* concerned = in;
    try {
        const mossbit::Project project = mossbit::ProjectStore::readToEnd(in);
        if (project.hasNotes())
            concerned = out;
        mossbit::PosixAtomicFile files;
        mossbit::WAVExporter::exportProject(project, out, files);
        return EXIT_SUCCESS;
    } catch (const std::exception& error) {
        return fail(std::string(concerned) + ": " + mossbit::description(error));
    }
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 3)
        return fail("usage: mossbit-render IN.mossbit OUT.wav");
    return render(std::string_view(argv[1]) == "-" ? "/dev/stdin" : argv[1], argv[2]);
}
