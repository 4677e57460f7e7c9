// Any bytes as an Access/Jet file for the real JetImport, whose path the environment variable JETIMPORT names.
//
// However broken the file is, the program ends with 0 or 1 within its time, leaves the file alone, and leaves either a
// sound store or nothing.

#include <sqlite3.h>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace {

constexpr int TimeLimitSeconds = 20;

struct Place {
    std::string importer;
    std::filesystem::path folder;
    std::filesystem::path source;
    std::filesystem::path target;
};

[[noreturn]] void Broken(const char* promise) {
    std::fprintf(stderr, "JetImport broke its promise: %s\n", promise);
    std::abort();
}

Place MakePlace() {
    Place place;
    const char* importer = std::getenv("JETIMPORT");
    if (importer == nullptr || access(importer, X_OK) != 0) {
        std::fprintf(stderr, "The environment variable JETIMPORT has to name the program JetImport.\n");
        std::exit(2);
    }
    place.importer = importer;
    std::string folder = (std::filesystem::temp_directory_path() / "fuzz-jet-XXXXXX").string();
    if (mkdtemp(folder.data()) == nullptr) {
        std::perror("mkdtemp");
        std::exit(2);
    }
    place.folder = folder;
    place.source = place.folder / "old.mdb";
    place.target = place.folder / "new.db";
    return place;
}

const Place& ThePlace() {
    struct Owner : Place {
        Owner()
            : Place(MakePlace()) {}
        ~Owner() {
            std::error_code ignored;
            std::filesystem::remove_all(folder, ignored);
        }
    };
    static const Owner owner;
    return owner;
}

/// The exit status, as `waitpid` gives it.
int Run(const Place& place) {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    std::string program = place.importer;
    std::string source = place.source.string();
    std::string target = place.target.string();
    char* arguments[] = {program.data(), source.data(), target.data(), nullptr};
    pid_t child = 0;
    if (posix_spawn(&child, program.c_str(), &actions, nullptr, arguments, environ) != 0)
        Broken("it cannot be started");
    posix_spawn_file_actions_destroy(&actions);

    const std::time_t deadline = std::time(nullptr) + TimeLimitSeconds;
    int status = 0;
    for (;;) {
        const pid_t ended = waitpid(child, &status, WNOHANG);
        if (ended == child)
            return status;
        if (ended < 0 && errno != EINTR)
            Broken("it cannot be waited for");
        if (std::time(nullptr) > deadline) {
            kill(child, SIGKILL);
            waitpid(child, &status, 0);
            Broken("it comes to an end");
        }
        const timespec pause = {0, 1'000'000};
        nanosleep(&pause, nullptr);
    }
}

void CheckStore(const std::string& path) {
    sqlite3* store = nullptr;
    if (sqlite3_open_v2(path.c_str(), &store, SQLITE_OPEN_READONLY, nullptr) != SQLITE_OK)
        Broken("the store opens");
    // Values outside their column's range are carried over on purpose.
    sqlite3_exec(store, "PRAGMA ignore_check_constraints = ON", nullptr, nullptr, nullptr);
    std::string verdict;
    const auto first = [](void* text, int, char** values, char**) {
        if (static_cast<std::string*>(text)->empty())
            *static_cast<std::string*>(text) = values[0];
        return 0;
    };
    if (sqlite3_exec(store, "PRAGMA integrity_check", first, &verdict, nullptr) != SQLITE_OK || verdict != "ok")
        Broken("the store is whole");
    std::string tables;
    sqlite3_exec(store,
                 "SELECT count(*) FROM sqlite_master WHERE type = 'table' AND name IN ('Queue', 'Display', "
                 "'Queue-Display', 'ScanPlan', 'Info-Direction', 'Hub', 'Message', 'rData', 'qData')",
                 first, &tables, nullptr);
    sqlite3_close(store);
    if (tables != "9")
        Broken("the store has all tables");
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    ThePlace();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const Place& place = ThePlace();
    std::filesystem::remove(place.target);
    {
        std::ofstream source(place.source, std::ios::binary | std::ios::trunc);
        source.write(reinterpret_cast<const char*>(data), std::streamsize(size));
        if (!source.flush()) {
            std::perror("the temporary file");
            std::exit(2);
        }
    }

    const int status = Run(place);

    if (!WIFEXITED(status) || WEXITSTATUS(status) > 1)
        Broken("its exit code is 0 or 1");
    if (WEXITSTATUS(status) == 0) {
        CheckStore(place.target.string());
        std::filesystem::remove(place.target);
    }
    const auto files = std::distance(std::filesystem::directory_iterator(place.folder), {});
    if (files != 1)
        Broken("it leaves nothing but the store");
    std::ifstream source(place.source, std::ios::binary);
    const std::vector<char> after((std::istreambuf_iterator<char>(source)), {});
    if (!std::equal(after.begin(), after.end(), data, data + size, [](char a, uint8_t b) { return uint8_t(a) == b; }))
        Broken("the file stays as it is");
    return 0;
}
