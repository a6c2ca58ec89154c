#include "platform/dao/TemporaryDatabase.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

const QString TableName = u"Größen"_s;
const QString Column = u"Wert ä"_s;

Field OfType(FieldType type, int size = 0)
{
    return {.Name = Column, .Type = type, .Size = size};
}

Field WithZeroLength(FieldType type, int size = 0)
{
    Field field = OfType(type, size);
    field.AllowZeroLength = true;
    return field;
}

Field Required(FieldType type, const Value& defaultValue = {})
{
    Field field = OfType(type, 20);
    field.Required = true;
    field.DefaultValue = defaultValue;
    return field;
}

void Add(Database& database, const Value& value)
{
    Recordset rows = database.OpenRecordset(TableName);
    rows.AddNew();
    rows.Set(Column, value);
    rows.Update();
}

} // namespace

Q_DECLARE_METATYPE(qb::FieldType)

class TestFieldTypes : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_database = std::make_unique<TemporaryDatabase>();
    }
    void cleanup() { m_database.reset(); }

    void acceptedValue_comesBack_data()
    {
        QTest::addColumn<Field>("field");
        QTest::addColumn<Value>("value");
        const Field boolean = OfType(FieldType::Boolean), byte = OfType(FieldType::Byte),
                    integer = OfType(FieldType::Integer), number = OfType(FieldType::Long),
                    date = OfType(FieldType::Date), text = OfType(FieldType::Text, 5), memo = OfType(FieldType::Memo),
                    binary = OfType(FieldType::LongBinary);
        QTest::newRow("Boolean, True") << boolean << Value(true);
        QTest::newRow("Boolean, False") << boolean << Value(false);
        QTest::newRow("Byte, lowest") << byte << Value(0);
        QTest::newRow("Byte, highest") << byte << Value(255);
        QTest::newRow("Integer, lowest") << integer << Value(-32768);
        QTest::newRow("Integer, highest") << integer << Value(32767);
        QTest::newRow("Long, lowest") << number << Value(-2147483648ll);
        QTest::newRow("Long, highest") << number << Value(2147483647);
        QTest::newRow("Date, lowest") << date << Value(Date::FromParts(100, 1, 1));
        QTest::newRow("Date, highest") << date << Value(Date::FromParts(9999, 12, 31, 23, 59, 59));
        QTest::newRow("Date, none") << date << Value(Date());
        QTest::newRow("Text, full length") << text << Value(u"abcde"_s);
        QTest::newRow("Text, full length beyond ASCII") << text << Value(u"äöüß–"_s);
        QTest::newRow("Text, digits stay text") << text << Value(u"00120"_s);
        QTest::newRow("Text, exponent stays text") << text << Value(u"1e3"_s);
        QTest::newRow("Text, blanks") << text << Value(u"  x  "_s);
        QTest::newRow("Text, zero length") << WithZeroLength(FieldType::Text, 5) << Value(QString());
        QTest::newRow("Memo, long") << memo << Value(QString(300000, u'ß'));
        QTest::newRow("Memo, digits stay text") << memo << Value(u"0012"_s);
        QTest::newRow("Memo, NUL inside") << memo << Value(u"a\0b"_s);
        QTest::newRow("Memo, zero length") << WithZeroLength(FieldType::Memo) << Value(QString());
        QTest::newRow("LongBinary, all bytes") << binary << Value(QByteArray("\0\1\x7f\x80\xff\0", 6));
        QTest::newRow("LongBinary, empty") << binary << Value(QByteArray());
        for (const Field& field : {byte, integer, number, date, text, memo, binary})
            QTest::addRow("Null, type %d", int(field.Type)) << field << Value();
    }

    void acceptedValue_comesBack()
    {
        QFETCH(Field, field);
        QFETCH(Value, value);
        MakeTable(field);
        Add(Db(), value);
        m_database->Reopen();
        QVERIFY(Db().OpenRecordset(TableName)[Column] == value);
    }

    void booleanThatIsNull_isStoredAsFalse()
    {
        MakeTable(OfType(FieldType::Boolean));
        Add(Db(), Value());
        QCOMPARE(Db().QueryValue(u"SELECT %1 FROM %2"_s.arg(Quoted(Column), Quoted(TableName))), Value(false));
    }

    void textOfANumber_isStoredAsTheNumber()
    {
        MakeTable(OfType(FieldType::Long));
        Add(Db(), u"42"_s);
        QVERIFY(Db().OpenRecordset(TableName)[Column] == Value(42));
    }

    void refusedValue_raisesAndLeavesNoRow_data()
    {
        QTest::addColumn<Field>("field");
        QTest::addColumn<Value>("value");
        QTest::addColumn<long>("number");
        constexpr long Range = 6, TooLong = 3163, Null = 3314, ZeroLength = 3315;
        QTest::newRow("Boolean, 1") << OfType(FieldType::Boolean) << Value(1) << Range;
        QTest::newRow("Boolean, -2") << OfType(FieldType::Boolean) << Value(-2) << Range;
        QTest::newRow("Byte, below") << OfType(FieldType::Byte) << Value(-1) << Range;
        QTest::newRow("Byte, above") << OfType(FieldType::Byte) << Value(256) << Range;
        QTest::newRow("Integer, below") << OfType(FieldType::Integer) << Value(-32769) << Range;
        QTest::newRow("Integer, above") << OfType(FieldType::Integer) << Value(32768) << Range;
        QTest::newRow("Long, below") << OfType(FieldType::Long) << Value(-2147483649ll) << Range;
        QTest::newRow("Long, above") << OfType(FieldType::Long) << Value(2147483648ll) << Range;
        QTest::newRow("Long, fraction") << OfType(FieldType::Long) << Value(1.5) << Range;
        QTest::newRow("Long, word") << OfType(FieldType::Long) << Value(u"many"_s) << Range;
        QTest::newRow("Long, bytes") << OfType(FieldType::Long) << Value("12"_ba) << Range;
        QTest::newRow("Date, below") << OfType(FieldType::Date) << Value(-56802297601ll) << Range;
        QTest::newRow("Date, above") << OfType(FieldType::Date) << Value(255611462400ll) << Range;
        QTest::newRow("Text, too long") << OfType(FieldType::Text, 5) << Value(u"abcdef"_s) << TooLong;
        QTest::newRow("Text, too long beyond ASCII") << OfType(FieldType::Text, 5) << Value(u"äöüäöü"_s) << TooLong;
        QTest::newRow("Text, NUL inside") << OfType(FieldType::Text, 5) << Value(u"a\0b"_s) << TooLong;
        QTest::newRow("Text, hidden behind NUL") << OfType(FieldType::Text, 5) << Value(u"a\0bcdefgh"_s) << TooLong;
        QTest::newRow("Text, zero length") << OfType(FieldType::Text, 5) << Value(QString()) << ZeroLength;
        QTest::newRow("Memo, zero length") << OfType(FieldType::Memo) << Value(QString()) << ZeroLength;
        QTest::newRow("Long, required") << Required(FieldType::Long) << Value() << Null;
        QTest::newRow("Text, required") << Required(FieldType::Text) << Value() << Null;
        QTest::newRow("Text, required and empty") << Required(FieldType::Text) << Value(QString()) << ZeroLength;
        QTest::newRow("Long, required with a default") << Required(FieldType::Long, 5) << Value() << Null;
    }

    void refusedValue_raisesAndLeavesNoRow()
    {
        QFETCH(Field, field);
        QFETCH(Value, value);
        QFETCH(long, number);
        MakeTable(field);
        QB_VERIFY_RAISES(Add(Db(), value), number);
        QVERIFY(Db().OpenRecordset(TableName).IsEmpty());
    }

    void refusal_namesTheColumn()
    {
        MakeTable(OfType(FieldType::Text, 5));
        try {
            Add(Db(), u"too long"_s);
            QFAIL("accepted");
        } catch (const RuntimeError& error) {
            QVERIFY2(error.Description().contains(Column), error.what());
        }
    }

    void refusedChange_keepsTheOldValue()
    {
        MakeTable(OfType(FieldType::Text, 5));
        Add(Db(), u"old"_s);
        QB_VERIFY_RAISES(
            Db().Execute(u"UPDATE %1 SET %2 = ?"_s.arg(Quoted(TableName), Quoted(Column)), {u"too long"_s}), 3163);
        QVERIFY(Db().OpenRecordset(TableName)[Column] == Value(u"old"_s));
    }

    void refusedValueOfAColumnAddedLater_raisesAndLeavesNoRow_data() { refusedValue_raisesAndLeavesNoRow_data(); }
    void refusedValueOfAColumnAddedLater_raisesAndLeavesNoRow()
    {
        QFETCH(Field, field);
        QFETCH(Value, value);
        QFETCH(long, number);
        if (field.Required && field.DefaultValue.IsNull())
            return; // rows that are there could have no value
        MakeTable({.Name = u"First"_s});
        Db().AppendField(TableName, field);
        QB_VERIFY_RAISES(Add(Db(), value), number);
        QVERIFY(Db().OpenRecordset(TableName).IsEmpty());
    }

    void acceptedValueOfAColumnAddedLater_comesBack_data() { acceptedValue_comesBack_data(); }
    void acceptedValueOfAColumnAddedLater_comesBack()
    {
        QFETCH(Field, field);
        QFETCH(Value, value);
        MakeTable({.Name = u"First"_s});
        Db().AppendField(TableName, field);
        Add(Db(), value);
        QVERIFY(Db().OpenRecordset(TableName)[Column] == value);
    }

    void missingValue_takesTheDefault_data()
    {
        QTest::addColumn<FieldType>("type");
        QTest::addColumn<Value>("value");
        QTest::newRow("number") << FieldType::Long << Value(-1);
        QTest::newRow("True") << FieldType::Boolean << Value(true);
        QTest::newRow("date") << FieldType::Date << Value(Date::FromParts(2026, 3, 2));
        QTest::newRow("text") << FieldType::Text << Value(u"it's \"ö\""_s);
        QTest::newRow("digits") << FieldType::Text << Value(u"007"_s);
    }

    void missingValue_takesTheDefault()
    {
        QFETCH(FieldType, type);
        QFETCH(Value, value);
        MakeTable(Required(type, value));
        m_database->Reopen();
        QVERIFY(Db().GetTableDef(TableName).Fields[0].DefaultValue == value);
        Recordset rows = Db().OpenRecordset(TableName);
        rows.AddNew();
        QVERIFY(rows[Column] == value);
        rows.Update();
        QVERIFY(Db().OpenRecordset(TableName)[Column] == value);
    }

    void text_isComparedWithoutCase_data()
    {
        QTest::addColumn<FieldType>("type");
        QTest::newRow("Text") << FieldType::Text;
        QTest::newRow("Memo") << FieldType::Memo;
    }

    void text_isComparedWithoutCase()
    {
        QFETCH(FieldType, type);
        MakeTable(OfType(type, 20));
        for (const QString& text : {u"b"_s, u"A"_s, u"C"_s})
            Add(Db(), text);
        QCOMPARE(Db().OpenRecordset(TableName, Quoted(Column) + u" = ?"_s, {u"a"_s}).RecordCount(), 1);
        QCOMPARE(Texts(Db(), u"SELECT %1 FROM %2 ORDER BY %1"_s.arg(Quoted(Column), Quoted(TableName))),
                 QStringList({u"A"_s, u"b"_s, u"C"_s}));
    }

    void attributes_data()
    {
        QTest::addColumn<Field>("field");
        QTest::addColumn<int>("attributes");
        QTest::newRow("Boolean") << OfType(FieldType::Boolean) << 1;
        QTest::newRow("Long") << OfType(FieldType::Long) << 1;
        QTest::newRow("Date") << OfType(FieldType::Date) << 1;
        QTest::newRow("Text") << OfType(FieldType::Text) << 2;
        QTest::newRow("Memo") << OfType(FieldType::Memo) << 2;
        QTest::newRow("LongBinary") << OfType(FieldType::LongBinary) << 2;
        Field counter = OfType(FieldType::Long);
        counter.AutoIncrement = true;
        QTest::newRow("auto-number") << counter << 17;
    }

    void attributes()
    {
        QFETCH(Field, field);
        QTEST(field.Attributes(), "attributes");
    }

private:
    Database& Db() { return **m_database; }
    void MakeTable(const Field& field) { Db().AppendTableDef({.Name = TableName, .Fields = {field}, .Indexes = {}}); }

    std::unique_ptr<TemporaryDatabase> m_database;
};

QB_TEST_MAIN(TestFieldTypes)
#include "tst_fieldtypes.moc"
