// Which objects are alive: platform callbacks carry an object as a bare pointer, and one that was
// registered before the object's end can arrive after it.
#pragma once

#include <algorithm>
#include <vector>

/// The live objects of a class whose instances are handed out as user data. Its constructor calls
/// Add(), its destructor Remove(), its static callbacks Find(). One thread.
template <class T>
class CMMLiveObjects {
public:
    static void Add(T* pObject) { m_Objects().push_back(pObject); }

    static void Remove(T* pObject) {
        auto& live = m_Objects();
        live.erase(std::remove(live.begin(), live.end(), pObject), live.end());
    }

    /// The object behind a callback's user data; null when that is null or the object is gone.
    static T* Find(void* pUserData) {
        for (T* pObject : m_Objects()) {
            if (pObject == pUserData) {
                return pObject;
            }
        }
        return nullptr;
    }

private:
    static std::vector<T*>& m_Objects() {
        static std::vector<T*> live;
        return live;
    }
};
