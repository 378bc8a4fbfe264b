#pragma once

#include <chrono>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace zelvar::test {

/// What an object store says: the XML of its listings and refusals, and whether a request is signed as it demands, in
/// Amazon's way (version 4) or Google's. Requests are given as their head: the first line and those of the headers.
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
    /// The same, and from now on it speaks as Azure does: containers lie below the account's name. A secret "sv=..." is
    /// no key but a signature that has to come with each request.
    void DemandAsAzure(std::string account, std::string secret) {
        Demand(std::move(account), std::move(secret));
        m_isAzure = true;
    }
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
    [[nodiscard]] std::string Page(Bucket const &bucket, std::map<std::string, std::string> const &query) const;

    std::map<std::string, Bucket> m_buckets;
    std::string m_key; ///< empty where nothing is demanded
    std::string m_secret;
    bool m_isAzure = false;
    std::optional<Answer> m_refusal;
};

/// Keys in the order of their numbers: "k000000000000.tif".
[[nodiscard]] std::string KeyOf(long long number);

/// The value of a header line, its name in any case; empty if it is not there.
[[nodiscard]] std::string HeaderOf(std::string const &request, std::string const &name);

} // namespace zelvar::test
