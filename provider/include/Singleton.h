#ifndef ORVSMIS_SINGLETON_H
#define ORVSMIS_SINGLETON_H

namespace orvsmis {

// One object of T per process, made on first use. Making it is not locked:
// singletons that many threads use are made while the module still runs on
// one thread, during initialisation.
template <class T>
class Singleton {
public:
    static T* Instance() {
        if (m_instance == nullptr) m_instance = new T();
        return m_instance;
    }

private:
    static T* m_instance;
};

template <class T>
T* Singleton<T>::m_instance = nullptr;

}  // namespace orvsmis

#endif
