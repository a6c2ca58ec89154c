// The two languages that a new library can have without a definition file.

#include "store/LanguageDefinition.h"

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr qint32 DarkBlue = 0x800000;
constexpr qint32 DarkGreen = 0x8000;

const QString VBStatements = u"*#Const*#Else*#ElseIf*#End If*#If*Alias*And*As*"
                             "Base*Binary*Boolean*Byte*ByVal*Call*Case*CBool*CByte*CCur*CDate*"
                             "CDbl*CDec*CInt*CLng*Close*Compare*Const*CSng*CStr*Currency*CVar*"
                             "CVErr*Decimal*Declare*DefBool*DefByte*DefCur*DefDate*DefDbl*"
                             "DefDec*DefInt*DefLng*DefObj*DefSng*DefStr*DefVar*Dim*Do*Double*"
                             "Each*Else*ElseIf*End*Enum*Eqv*Erase*Error*Exit*Explicit*False*"
                             "For*Function*Get*Global*GoSub*GoTo*If*Imp*In*Input*Integer*"
                             "Is*LBound*Let*Lib*Like*Line*Lock*Long*Loop*LSet*Name*New*Next*Not*"
                             "Object*On*Open*Option*Or*Output*Print*Private*Property*Public*Put*"
                             "Random*Read*ReDim*Resume*Return*RSet*Seek*Select*Set*Single*Spc*"
                             "Static*String*Stop*Sub*Tab*Then*True*Type*UBound*Unlock*"
                             "Variant*Wend*While*With*Xor*Nothing*To*"_s;

const QString VBFunctions = u"*Abs*Add*AddItem*AppActivate*Array*Asc*Atn*Beep*"
                            "Begin*BeginProperty*ChDir*ChDrive*Choose*Chr*Clear*Collection*"
                            "Command*Cos*CreateObject*CurDir*DateAdd*DateDiff*DatePart*"
                            "DateSerial*DateValue*Day*DDB*DeleteSetting*Dir*DoEvents*"
                            "EndProperty*Environ*EOF*Err*Exp*FileAttr*FileCopy*FileDateTime*"
                            "FileLen*Fix*Format*FV*GetAllSettings*GetAttr*GetObject*GetSetting*"
                            "Hex*Hide*Hour*InputBox*InStr*Int*IPmt*IRR*IsArray*IsDate*"
                            "IsEmpty*IsError*IsMissing*IsNull*IsNumeric*IsObject*Item*Kill*"
                            "LCase*Left*Len*Load*Loc*LOF*Log*LTrim*Me*Mid*Minute*MIRR*MkDir*"
                            "Month*Now*NPer*NPV*Oct*Pmt*PPmt*PV*QBColor*Raise*Randomize*Rate*"
                            "Remove*RemoveItem*Reset*RGB*Right*RmDir*Rnd*RTrim*SaveSetting*"
                            "Second*SendKeys*SetAttr*Sgn*Shell*"
                            "Sin*SLN*Space*Sqr*Str*StrComp*StrConv*Switch*SYD*Tan*Text*"
                            "Time*Timer*TimeSerial*TimeValue*Trim*TypeName*UCase*Unload*"
                            "Val*VarType*WeekDay*Width*Year*"_s;

// The capitals of Char and Class are wanted: the colouriser gives a word the spelling of its list.
const QString CppStatements = u"*auto*bool*break*case*catch*Char*cerr*cin*Class*const*"
                              "continue*cout*default*delete*do*double*else*enum*explicit*extern*float*"
                              "for*friend*goto*if*inline*int*long*namespace*new*operator*private*protected*"
                              "public*register*return*short*signed*sizeof*static*struct*switch*template*"
                              "this*throw*try*typedef*union*unsigned*virtual*void*volatile*while*__asm*"
                              "__fastcall*__based*__cdecl*__pascal*__inline*__multiple_inheritance*"
                              "__single_inheritance*__virtual_inheritance*"_s;

const QString CppPreprocessor = u"*define*error*include*elif*line*ifdef*pragma*"
                                "endif*ifndef*undef*#*"_s;

QStringList Words(const QString& list)
{
    return list.split(u'*', Qt::SkipEmptyParts);
}

} // namespace

LanguageDefinition BuiltInLanguage(LanguageType type)
{
    LanguageDefinition language;
    language.ColouredKeywordColour = DarkBlue;
    language.KeywordColour = 0;
    language.CommentColour = DarkGreen;
    if (type == LanguageType::VB) {
        language.Language = u"VB"_s;
        language.Comment = u"'"_s;
        language.ColouredWords = Words(VBStatements);
        language.PlainWords = Words(VBFunctions);
    } else {
        language.Language = u"C++"_s;
        language.Comment = u"//"_s;
        language.CommentStart = u"/*"_s;
        language.CommentEnd = u"*/"_s;
        language.ColouredWords = Words(CppStatements);
        language.PlainWords = Words(CppPreprocessor);
    }
    return language;
}

} // namespace qb
