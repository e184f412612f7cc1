#include "jet/journal.h"
#include "jet/verify.h"

#include "platform/clock.h"
#include "platform/random.h"

#include "tests/kill/kill_model.h"
#include "tests/platform/interposed_file_system.h"
#include "tests/platform/temporary_folder.h"

#include <csignal>
#include <cstdio>
#include <deque>
#include <iostream>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

/// Kills a program that changes a database, again and again, and looks at what is left: kill_driver [--kills N]
/// [--seed N]. The killed program tells each change that it has made; what it told must be there as far as it was
/// saved: the content must be that after some step of its work, none older than the last save that is certain, and none
/// newer than the step after the last one told.
namespace kelb::kill {
namespace {

constexpr double kCommitSeconds = 0.5; ///< Pager::Options::commitSeconds
constexpr double kPromise = 1.0;       ///< seconds of work that a kill may cost
constexpr int kKillsPerFile = 25;

/// Time that passes `speed` times as fast, so that the saves that come of themselves come often.
class QuickClock final : public platform::Clock {
public:
    explicit QuickClock(double speed) : speed_(speed) {}
    platform::DateTime now() const override { return clock_.now(); }
    double steadySeconds() const override { return clock_.steadySeconds() * speed_; }

private:
    platform::SystemClock clock_;
    double speed_;
};

/// What the child tells through the pipe; times by its clock.
struct Report {
    enum class Kind : std::uint32_t {
        Done,   ///< so many steps; `begun`: now
        Ticked, ///< asked the engine to save when due, from `begun` to `ended`
        Dying   ///< at `begun`
    };
    Kind kind;
    std::uint64_t steps;
    double begun, ended;
};

/// How one child works and ends.
struct Plan {
    std::uint64_t seed = 0;
    double speed = 1;
    int milliseconds = 0;       ///< killed after so long; 0: it kills itself
    std::size_t fileChange = 0; ///< in the nth write, sync, truncation, removal or renaming
    bool journalOnly = false;   ///< only those of the journal count
    bool opensOnly = false;     ///< it only opens the file, which plays back a journal
};

class Child {
public:
    Child(const Plan& plan, std::u16string path, Model model, int pipe)
        : plan_(plan), path_(std::move(path)), model_(std::move(model)), pipe_(pipe), clock_(plan.speed),
          random_(plan.seed), base_(platform::makeSystemFileSystem({})), files_(*base_) {}

    [[noreturn]] void run() {
        try {
            work();
        } catch (const std::exception& error) {
            std::fprintf(stderr, "the child failed: %s\n", error.what());
        }
        _exit(1);
    }

private:
    void work() {
        files_.before = [this](std::string_view operation, std::u16string_view path) {
            return strike(operation, path);
        };
        files_.halfway = [this] { die(); };
        platform::SystemRandom ids;
        platform::Platform platform{files_, clock_, ids, u""};
        const auto database = jet::Database::open(platform, path_, {.access = jet::Pager::Access::Write});
        if (plan_.opensOnly)
            die();
        ModelTable table(*database);
        for (;;) {
            const Step step = model_.draw(random_);
            table.apply(step, model_);
            model_.apply(step);
            ++steps_;
            tell(Report::Kind::Done, clock_.steadySeconds());
            const double begun = clock_.steadySeconds();
            database->commitIfDue();
            tell(Report::Kind::Ticked, begun);
        }
    }
    std::size_t strike(std::string_view operation, std::u16string_view path) {
        const bool counts =
            operation != "read" && operation != "open" && (!plan_.journalOnly || path == jet::journalPath(path_));
        if (plan_.fileChange == 0 || !counts || ++changes_ < plan_.fileChange)
            return platform::InterposedFileSystem::kAll;
        if (operation == "write" && plan_.seed % 3 != 0)
            return plan_.seed / 3 % 20000; // more bytes than a short write has: all of it, and then
        die();
    }
    [[noreturn]] void die() {
        tell(Report::Kind::Dying, clock_.steadySeconds());
        ::kill(getpid(), SIGKILL);
        for (;;)
            pause();
    }
    void tell(Report::Kind kind, double begun) const {
        const Report report{kind, steps_, begun, clock_.steadySeconds()};
        if (write(pipe_, &report, sizeof report) != static_cast<ssize_t>(sizeof report))
            _exit(1);
    }

    const Plan plan_;
    std::u16string path_;
    Model model_;
    int pipe_;
    QuickClock clock_;
    std::mt19937_64 random_;
    std::unique_ptr<platform::FileSystem> base_;
    platform::InterposedFileSystem files_;
    std::uint64_t steps_ = 0;
    std::size_t changes_ = 0;
};

/// What the parent heard of a child.
struct Heard {
    std::uint64_t told = 0;                               ///< steps
    std::uint64_t certain = 0;                            ///< steps that the engine has promised to have saved
    std::deque<std::pair<std::uint64_t, double>> waiting; ///< steps that are not certain, and when they were told
    double lastTick = 0, died = 0;

    void hear(const Report& report) {
        if (report.kind == Report::Kind::Done) {
            told = report.steps;
            waiting.emplace_back(report.steps, report.begun);
        } else if (report.kind == Report::Kind::Ticked) {
            for (; !waiting.empty() && waiting.front().second + kCommitSeconds <= report.begun; waiting.pop_front())
                certain = waiting.front().first;
            lastTick = report.ended;
        } else {
            died = report.begun;
        }
    }
};

struct Figures {
    std::uint64_t kills = 0, inCommit = 0, inPlayBack = 0, torn = 0, playedBack = 0, steps = 0, certain = 0, young = 0,
                  excused = 0;
};

class Driver {
public:
    Driver(std::uint64_t seed, std::u16string path) : random_(seed), path_(std::move(path)) {}

    void run(std::uint64_t kills) {
        while (figures.kills < kills) {
            if (figures.kills % kKillsPerFile == 0 || model_.extras >= Model::kMostExtras)
                newFile();
            const Plan plan = draw();
            const Heard heard = killed(plan);
            countJournal();
            for (int again = 0; again < 3 && random_() % 3 == 0 && figures.kills < kills && journal() != Found::None;
                 ++again) {
                killed({.seed = random_(), .fileChange = 1 + random_() % 6, .journalOnly = false, .opensOnly = true});
                figures.inPlayBack += journal() != Found::None ? 1U : 0U;
            }
            check(plan, heard);
        }
    }

    Figures figures;

private:
    using Found = jet::Journal::Found;

    std::unique_ptr<jet::Database> open() {
        return jet::Database::open(platform_, path_, {.access = jet::Pager::Access::Write});
    }
    Found journal() { return jet::Journal::find(*files_, path_).found; }

    void newFile() {
        if (files_->fileExists(path_))
            files_->removeFile(path_);
        ModelTable(*jet::Database::create(platform_, path_)).create();
        model_ = {};
    }
    /// Mostly in the middle of a save; else at any time, now and then by the real clock.
    Plan draw() {
        Plan plan{.seed = random_()};
        if (random_() % 3 != 0) {
            plan.journalOnly = random_() % 3 == 0;
            plan.fileChange = 1 + random_() % (plan.journalOnly ? 15 : 120);
        } else if (figures.kills % 10 == 9) {
            plan.milliseconds = static_cast<int>(1100 + random_() % 900);
        } else {
            plan.speed = 20;
            plan.milliseconds = static_cast<int>(5 + random_() % 150);
        }
        return plan;
    }
    Heard killed(const Plan& plan) {
        int ends[2] = {};
        if (pipe(ends) != 0)
            throw std::runtime_error("no pipe");
        const pid_t child = fork();
        if (child < 0)
            throw std::runtime_error("no process");
        if (child == 0) {
            close(ends[0]);
            Child(plan, path_, model_, ends[1]).run();
        }
        close(ends[1]);
        Heard heard;
        const platform::SystemClock clock;
        const double end = clock.steadySeconds() + plan.milliseconds / 1000.0;
        bool alive = plan.milliseconds > 0;
        for (pollfd ready{ends[0], POLLIN, 0};;) {
            const double left = alive ? std::max(end - clock.steadySeconds(), 0.0) : 60.0;
            const int count = poll(&ready, 1, static_cast<int>(left * 1000));
            if (alive && clock.steadySeconds() >= end) {
                heard.died = clock.steadySeconds() * plan.speed;
                ::kill(child, SIGKILL);
                alive = false;
            }
            Report report{};
            if (count > 0 && read(ends[0], &report, sizeof report) != static_cast<ssize_t>(sizeof report))
                break; // the pipe is closed: the child is gone
            if (count > 0)
                heard.hear(report);
        }
        close(ends[0]);
        int status = 0;
        waitpid(child, &status, 0);
        if (!WIFSIGNALED(status) || WTERMSIG(status) != SIGKILL)
            throw std::runtime_error("the child ended by itself");
        ++figures.kills;
        return heard;
    }
    void countJournal() {
        const Found found = journal();
        figures.inCommit += found != Found::None ? 1U : 0U;
        figures.torn += found == Found::Torn ? 1U : 0U;
        figures.playedBack += found == Found::Whole ? 1U : 0U;
    }

    /// Opens what is left, and finds the step that its content is that of; the next child goes on from there.
    void check(const Plan& plan, Heard heard) {
        const auto database = open();
        if (files_->fileExists(jet::journalPath(path_)))
            throw std::runtime_error("a journal stays");
        for (const jet::Fault& fault : jet::verify(*database))
            throw std::runtime_error("page " + std::to_string(raw(fault.page)) + ": " + fault.text);
        const Model found = ModelTable(*database).read();

        std::mt19937_64 random(plan.seed);
        Model model = model_;
        std::optional<std::uint64_t> there;
        for (std::uint64_t steps = 0;; ++steps) {
            if (model.sameContent(found)) {
                there = steps;
                model_ = model;
            }
            if (steps == heard.told + 1)
                break;
            const Step step = model.draw(random);
            model.apply(step);
            if (step.kind == Step::Kind::Save && steps < heard.told)
                heard.certain = std::max(heard.certain, steps + 1);
        }
        if (!there)
            throw std::runtime_error("the content is that of no step of " + std::to_string(heard.told));
        if (*there < heard.certain)
            throw std::runtime_error("the content is that of step " + std::to_string(*there) + ", but step " +
                                     std::to_string(heard.certain) + " was saved");
        countLost(heard, *there);
    }
    /// Changes that are not there must be younger than the promise, unless one long step or save kept the engine from
    /// being asked: that is for the host to say, and it is counted.
    void countLost(const Heard& heard, std::uint64_t there) {
        figures.steps += heard.told;
        figures.certain += heard.certain;
        for (const auto& [step, told] : heard.waiting) {
            if (step <= there)
                continue;
            if (told + kPromise > heard.died)
                ++figures.young;
            else if (heard.lastTick + kCommitSeconds <= heard.died)
                ++figures.excused;
            else
                throw std::runtime_error("a change of " + std::to_string(heard.died - told) + " seconds ago is lost");
        }
    }

    std::mt19937_64 random_;
    std::u16string path_;
    Model model_;
    std::unique_ptr<platform::FileSystem> files_ = platform::makeSystemFileSystem({});
    platform::SystemClock clock_;
    platform::SystemRandom ids_;
    platform::Platform platform_{*files_, clock_, ids_, u""};
};

} // namespace
} // namespace kelb::kill

int main(int argc, char** argv) {
    using namespace kelb;
    std::uint64_t kills = 50, seed = std::random_device{}();
    for (int i = 1; i + 1 < argc; i += 2)
        (std::string_view(argv[i]) == "--kills" ? kills : seed) = std::stoull(argv[i + 1]);
    std::cout << "seed " << seed << std::endl;
    const platform::TemporaryFolder folder;
    kill::Driver driver(seed, folder.path() + u"/base.mdb");
    try {
        driver.run(kills);
    } catch (const std::exception& error) {
        std::cout << "after kill " << driver.figures.kills << ": " << error.what() << "\n";
        return 1;
    }
    const kill::Figures& f = driver.figures;
    std::cout << f.kills << " kills: " << f.inCommit << " inside a save (" << f.playedBack << " left a whole journal, "
              << f.torn << " a torn one), " << f.inPlayBack << " while a journal was played back\n"
              << f.steps << " changes told, " << f.certain << " of them certainly saved, all of these there; "
              << f.young << " younger than a second lost, " << f.excused << " behind one long step lost\n";
    return f.inCommit > 0 && f.certain > 0 ? 0 : 1;
}
