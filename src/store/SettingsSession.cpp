#include "zelvar/store/SettingsSession.h"

#include "zelvar/base/Report.h"

#include <cstdio>
#include <utility>

namespace zelvar {

namespace {

constexpr std::chrono::milliseconds kAtEnd{2'000}; // for what was postponed, when the process ends

} // namespace

DString NormalKey(DString const &key) {
    bool const isNormal = !key.starts_with('\\') && !key.ends_with('\\') && key.find("\\\\") == DString::npos;
    return isNormal ? key : JoinNotEmpty(Split(key, '\\'), '\\');
}

void SettingsSession::BeforeFork() {
    mutex.lock();
    if (depth == 0)
        database.CloseQuickly();
}

void SettingsSession::AfterFork(Side side) {
    if (side == Side::Child) {
        if (!isDoingPostponed) {
            postponed.clear(); // the parent does it
            seen.clear();
        }
        if (depth > 0) {
            isLocked = true;
            database.Abandon();
        }
    }
    mutex.unlock();
}

void SettingsSession::BeforeExit() {
    std::lock_guard const lock(mutex);
    if (depth > 0)
        return;
    End();
    database.Close();
}

void SettingsSession::End() {
    if (Patiently(kAtEnd, [&] { return DoPostponed(); }) == Outcome::Busy)
        std::fputs("zelvar: settings are not kept: another process has locked them\n", stderr);
}

SettingsSession::Outcome SettingsSession::Transact(milliseconds patience, std::function<bool()> const &body) {
    return Patiently(patience, [&] {
        Outcome const before = DoPostponed(); // which is older
        return before == Outcome::Done ? TryTransact(body) : before;
    });
}

SettingsSession::Outcome SettingsSession::WriteAlone(milliseconds patience, DString const &key, DString const &name,
                                                     Value const &value) {
    DString const normal = NormalKey(key);
    return Patiently(patience, [&] {
        if (isLocked)
            return Outcome::Failed;
        Outcome outcome = DoPostponed(); // which is older
        if (outcome == Outcome::Done)
            outcome = database.Open(Access::Write);
        if (outcome == Outcome::Done)
            outcome = database.Rewrite(normal, name, value);
        if (outcome != Outcome::Nothing)
            return outcome;
        return TryTransact(
            [&] { return Inside([&] { return database.Write(normal, name, value); }) == Outcome::Done; });
    });
}

SettingsSession::Outcome SettingsSession::TryTransact(std::function<bool()> const &body) {
    Outcome outcome = isLocked ? Outcome::Failed : database.Open(Access::Write);
    if (outcome == Outcome::Done)
        outcome = database.Begin();
    if (outcome != Outcome::Done)
        return outcome;
    Depth const inside(*this);
    bool const wanted = body();
    if (isLocked)
        return Outcome::Failed;
    if (trouble != Outcome::Done)
        return trouble;
    return wanted ? database.Commit() : Outcome::Nothing;
}

bool SettingsSession::TransactNested(std::function<bool()> const &body) {
    if (isLocked || database.BeginNested() != Outcome::Done)
        return false;
    Outcome const outside = std::exchange(trouble, Outcome::Done);
    ++depth;
    auto const end = [&](bool keep) {
        --depth;
        bool const isDamaged = trouble == Outcome::Damaged; // which ends the outer ones too
        trouble = isDamaged ? trouble : outside;
        return !isLocked && database.EndNested(keep) == Outcome::Done && keep;
    };
    try {
        bool const wanted = body();
        return end(wanted && trouble == Outcome::Done);
    } catch (...) {
        end(false);
        throw;
    }
}

bool SettingsSession::ReadTogether(std::function<void()> const &body) {
    {
        std::lock_guard const lock(mutex);
        std::ignore = DoPostponedAtOnce();
        if (depth > 0 || isPostponing) { // nobody else writes meanwhile
            body();
            return trouble == Outcome::Done;
        }
    }
    bool isWhole = true;
    bool hasRun = false;
    Outcome const outcome = Patiently(kPatience, [&] {
        if (hasRun)
            return Outcome::Done; // what it found damaged has been set aside
        Outcome opened = database.Open(Access::Read);
        if (opened == Outcome::Done)
            opened = database.BeginReading();
        isWhole = isWhole && opened != Outcome::Damaged;
        if (opened != Outcome::Done)
            return opened;
        hasRun = true;
        Depth const inside(*this);
        body();
        isWhole = isWhole && trouble == Outcome::Done;
        return trouble == Outcome::Damaged ? Outcome::Damaged : Outcome::Done;
    });
    if (hasRun)
        return isWhole;
    body();
    return isWhole && outcome == Outcome::Nothing; // without a file there is nothing to hold on to
}

bool SettingsSession::Postpone(std::function<bool()> const &body) {
    auto const former = seen;
    bool const wasPostponing = std::exchange(isPostponing, true);
    bool const wanted = body();
    isPostponing = wasPostponing;
    if (!wanted)
        seen = former;
    else if (!isPostponing)
        postponed.push_back(body);
    return wanted;
}

SettingsSession::Outcome SettingsSession::DoPostponed() {
    if (postponed.empty() || depth > 0 || isPostponing || isDoingPostponed)
        return Outcome::Done;
    isDoingPostponed = true;
    Outcome const outcome = TryTransact([&] {
        for (auto const &body : postponed)
            std::ignore = TransactNested(body); // one that is refused now changes nothing
        return true;
    });
    isDoingPostponed = false;
    if (outcome == Outcome::Busy || outcome == Outcome::Damaged)
        return outcome;
    if (outcome != Outcome::Done)
        Report::TraceMessage(Report::kTraceOpen, "settings could not be written later either");
    postponed.clear();
    seen.clear();
    return Outcome::Done;
}

SettingsSession::Outcome SettingsSession::DoPostponedAtOnce() {
    database.SetPatience(milliseconds(0));
    return DoPostponed();
}

bool SettingsSession::IsPostponed(DString const &key, DString const &name, std::optional<Value> const &value) {
    std::lock_guard const lock(mutex);
    if (isPostponing)
        seen[{NormalKey(key), name}] = value;
    return isPostponing;
}

std::optional<SettingsSession::Value> const *SettingsSession::Seen(DString const &key, DString const &name) const {
    if (seen.empty() || isDoingPostponed)
        return nullptr;
    auto const at = seen.find({NormalKey(key), name});
    return at == seen.end() ? nullptr : &at->second;
}

} // namespace zelvar
