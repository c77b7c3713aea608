#include <Pegasus/Schema/CaseInsensitive.h>

namespace Pegasus {

namespace {

inline unsigned char lowerChar(unsigned char c)
{
    return (c >= 'A' && c <= 'Z') ? static_cast<unsigned char>(c + ('a' - 'A')) : c;
}

} // namespace

bool CaseInsensitive::equal(const std::string& a, const std::string& b)
{
    if (a.size() != b.size())
        return false;
    for (std::size_t i = 0; i < a.size(); ++i)
    {
        if (lowerChar(static_cast<unsigned char>(a[i])) != lowerChar(static_cast<unsigned char>(b[i])))
            return false;
    }
    return true;
}

int CaseInsensitive::compare(const std::string& a, const std::string& b)
{
    std::size_t n = a.size() < b.size() ? a.size() : b.size();
    for (std::size_t i = 0; i < n; ++i)
    {
        unsigned char ca = lowerChar(static_cast<unsigned char>(a[i]));
        unsigned char cb = lowerChar(static_cast<unsigned char>(b[i]));
        if (ca != cb)
            return ca < cb ? -1 : 1;
    }
    if (a.size() == b.size())
        return 0;
    return a.size() < b.size() ? -1 : 1;
}

std::string CaseInsensitive::lower(const std::string& s)
{
    std::string out(s);
    for (char& c : out)
        c = static_cast<char>(lowerChar(static_cast<unsigned char>(c)));
    return out;
}

std::size_t CaseInsensitive::Hash::operator()(const std::string& s) const
{
    // FNV-1a over the lower-cased bytes.
    std::size_t h = static_cast<std::size_t>(1469598103934665603ULL);
    for (char c : s)
    {
        h ^= lowerChar(static_cast<unsigned char>(c));
        h *= static_cast<std::size_t>(1099511628211ULL);
    }
    return h;
}

} // namespace Pegasus
