#pragma once

#include <chrono>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace zelvar::test {

/// What an object store says: the XML of its listings and refusals, and whether a request is signed as it demands
/// (AWS, version 4). Requests are given as their head: the first line and those of the headers.
class StoreAnswers {
public:
    struct Bucket {
        std::vector<std::string> keys{}; ///< in any order; folders end in "/"
        std::size_t keysOfPage = 1000;
        bool isEndless = false; ///< `KeyOf` of all numbers
        bool repeats = false;   ///< each page is the first one, and says that another follows
    };
    void SetBucket(std::string const &name, Bucket bucket);
    /// Only who signs with this key is served.
    void Demand(std::string key, std::string secret);
    /// Whatever is asked is refused with that status and code; `more` stands beside the code.
    void Refuse(int status, std::string code, std::string more = {});

    struct Answer {
        int status = 200;
        std::string body;
    };
    /// Nothing for a request that an object answers, if it is signed.
    [[nodiscard]] std::optional<Answer> AnswerTo(std::string const &request) const;

private:
    [[nodiscard]] std::optional<Answer> RefusalOf(std::string const &request) const;
    [[nodiscard]] std::string Buckets() const;
    [[nodiscard]] static std::string Page(Bucket const &bucket, std::map<std::string, std::string> const &query);

    std::map<std::string, Bucket> m_buckets;
    std::string m_key; ///< empty where nothing is demanded
    std::string m_secret;
    std::optional<Answer> m_refusal;
};

/// Keys in the order of their numbers: "k000000000000.tif".
[[nodiscard]] std::string KeyOf(long long number);

/// The value of a header line, its name in any case; empty if it is not there.
[[nodiscard]] std::string HeaderOf(std::string const &request, std::string const &name);

} // namespace zelvar::test
