#ifndef ORVSMIS_DELEGATE_H
#define ORVSMIS_DELEGATE_H

#include <list>

namespace orvsmis {

class ParentArgs;

// An event: a list of handlers called in the order they were added. Filled
// once while the provider starts and read without a lock afterwards; there
// is no way to remove a single handler. A handler that throws ends the
// firing, and the exception reaches the caller of Invoke.
template <class Fn>
class Delegate {
public:
    Delegate() {}
    ~Delegate() { Clear(); }

    void Add(Fn fn) { m_handlers.push_back(fn); }
    Delegate& operator+=(Fn fn) {
        Add(fn);
        return *this;
    }

    template <class Args>
    void Invoke(Args& args) const {
        for (typename std::list<Fn>::const_iterator it = m_handlers.begin(); it != m_handlers.end(); ++it) {
            if (*it != nullptr) (*it)(args);
        }
    }

    void Clear() { m_handlers.clear(); }
    size_t Size() const { return m_handlers.size(); }

private:
    Delegate(const Delegate&) = delete;
    Delegate& operator=(const Delegate&) = delete;

    std::list<Fn> m_handlers;
};

// The one kind of event of the model layer.
typedef void (*ParentHandler)(ParentArgs&);
typedef Delegate<ParentHandler> ModelEvent;

}  // namespace orvsmis

#endif
