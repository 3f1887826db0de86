#include "app/shell/recentfiles.h"

#include "app/shell/settings.h"

namespace {

constexpr char arrayKey[] = "recentFiles";
constexpr char pathKey[] = "path";
constexpr char commandKey[] = "command";

} // namespace

void RecentFiles::add(const Entry &entry)
{
    list.removeAll(entry);
    list.prepend(entry);
    list = list.mid(0, most);

    QSettings store = Settings::store();
    store.beginWriteArray(arrayKey, list.size());
    for (int i = 0; i < list.size(); ++i) {
        store.setArrayIndex(i);
        store.setValue(pathKey, list[i].path);
        store.setValue(commandKey, list[i].command);
    }
    store.endArray();
}

void RecentFiles::restore()
{
    list.clear();
    QSettings store = Settings::store();
    const int count = qMin(store.beginReadArray(arrayKey), most);
    for (int i = 0; i < count; ++i) {
        store.setArrayIndex(i);
        const Entry entry = {store.value(pathKey).toString(), store.value(commandKey).toString()};
        if (!entry.path.isEmpty())
            list << entry;
    }
    store.endArray();
}
