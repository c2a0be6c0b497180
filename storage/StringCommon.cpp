#include "storage/StringCommon.h"

namespace {

// Where a word that begins at or after position begins, and where it ends; both are the text's end
// when there is none.
struct Word {
    Word(const QString& text, int position) : begin(position) {
        while (begin < text.size() && text.at(begin).isSpace())
            ++begin;
        end = begin;
        while (end < text.size() && !text.at(end).isSpace())
            ++end;
    }
    int begin, end;
};

}  // namespace

void StringCommon::splitString(const QString& text, QVector<QString>& out) {
    out.clear();
    for (Word word(text, 0); word.begin < text.size(); word = Word(text, word.end))
        out.append(text.mid(word.begin, word.end - word.begin));
}

QString StringCommon::WordAt(const QString& text, int index) {
    Word word(text, 0);
    for (int i = 0; i < index; ++i)
        word = Word(text, word.end);
    return text.mid(word.begin, word.end - word.begin);
}
