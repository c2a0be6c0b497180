#include "storage/StringCommon.h"

void StringCommon::splitString(const QString& text, QVector<QString>& out) {
    out.clear();
    QString word;
    for (int i = 0; i <= text.size(); ++i) {
        if (i < text.size() && !text.at(i).isSpace()) {
            word += text.at(i);
        } else if (!word.isEmpty()) {
            out.append(word);
            word.clear();
        }
    }
}
