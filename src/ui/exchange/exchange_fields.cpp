#include "ui/exchange/exchange_fields.h"

#include <QComboBox>
#include <QJsonArray>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>

namespace ui {

namespace {

using Kind = ExchangeFieldKind;

constexpr ExchangeField kPort{"port", "IDS_EXCHANGE_PORT", Kind::Number, "2300"};
constexpr ExchangeField kAddress{"address", "IDS_EXCHANGE_ADDRESS", Kind::Text, "0.0.0.0"};
constexpr ExchangeField kAllow{"allow", "IDS_EXCHANGE_ALLOW", Kind::List, "192.0.2.10, 10.0.0.0/24"};
constexpr ExchangeField kHost{"host", "IDS_EXCHANGE_HOST", Kind::Text, "192.0.2.10"};
constexpr ExchangeField kUser{"user", "IDS_EXCHANGE_USER"};
constexpr ExchangeField kPassword{"password", "IDS_PASSWORD", Kind::Secret};

constexpr ExchangeField kSerial[] = {
    {"device", "IDS_EXCHANGE_DEVICE", Kind::Text, "/dev/ttyUSB0"},
    {"line", "IDS_EXCHANGE_LINE", Kind::Text, "9600 8N1"},
    {"flow", "IDS_EXCHANGE_FLOW", Kind::Choice, "", "none=IDS_EXCHANGE_FLOW_NONE,rtscts=RTS/CTS,xonxoff=XON/XOFF"},
};
constexpr ExchangeField kListen[] = {kPort, kAddress, kAllow};
constexpr ExchangeField kConnectFields[] = {
    kHost, kPort, {"login", "IDS_EXCHANGE_LOGIN", Kind::Steps, "- | SMDR\nPassword: | PCCSMDR"}};
constexpr ExchangeField kMitel5000[] = {kHost, {"port", "IDS_EXCHANGE_PORT", Kind::Number, "4000"}, kPassword};
constexpr ExchangeField kFile[] = {
    {"path", "IDS_EXCHANGE_FILE", Kind::Text, "/var/log/asterisk/cdr-csv/Master.csv"},
    {"from", "IDS_EXCHANGE_FROM", Kind::Choice, "", "start=IDS_EXCHANGE_FROM_START,end=IDS_EXCHANGE_FROM_END"},
};
constexpr ExchangeField kFolder[] = {
    {"path", "IDS_FOLDER", Kind::Text, "/srv/cdr"},
    {"pattern", "IDS_EXCHANGE_PATTERN", Kind::Text, "cdr_*"},
    {"after", "IDS_EXCHANGE_AFTER", Kind::Choice, "",
     "keep=IDS_EXCHANGE_AFTER_KEEP,move=IDS_EXCHANGE_AFTER_MOVE,delete=IDS_EXCHANGE_AFTER_DELETE"},
};
constexpr ExchangeField kManager[] = {
    {"host", "IDS_EXCHANGE_HOST", Kind::Text, "127.0.0.1"},
    {"port", "IDS_EXCHANGE_PORT", Kind::Number, "5038"},
    kUser,
    {"secret", "IDS_PASSWORD", Kind::Secret},
};
constexpr ExchangeField kHttp[] = {
    kPort,
    {"address", "IDS_EXCHANGE_ADDRESS", Kind::Text, "127.0.0.1"},
    {"path", "IDS_EXCHANGE_PATH", Kind::Text, "/"},
    {"token", "IDS_EXCHANGE_TOKEN", Kind::Secret},
    {"certificate", "IDS_EXCHANGE_CERTIFICATE"},
    {"key", "IDS_EXCHANGE_KEY"},
};
constexpr ExchangeField kGet[] = {
    {"url", "IDS_EXCHANGE_URL", Kind::Text, "https://192.0.2.10:8443/cdrapi?format=JSON&startTime={from}&endTime={to}"},
    kUser,
    kPassword,
    {"id", "IDS_EXCHANGE_ID_KEYS", Kind::List, "AcctId"},
    {"every", "IDS_EXCHANGE_EVERY", Kind::Number, "60"},
};
constexpr ExchangeField kSql[] = {
    {"kind", "IDS_EXCHANGE_SQL_KIND", Kind::Choice, "", "=IDS_NULL,mysql=MySQL / MariaDB,postgresql=PostgreSQL"},
    {"preset", "IDS_EXCHANGE_PRESET", Kind::Choice, "", "=IDS_NULL,freepbx=FreePBX"},
    {"host", "IDS_EXCHANGE_HOST", Kind::Text, "127.0.0.1"},
    {"port", "IDS_EXCHANGE_PORT", Kind::Number, "3306"},
    kUser,
    kPassword,
    {"database", "IDS_EXCHANGE_DATABASE", Kind::Text, "asteriskcdrdb"},
    {"table", "IDS_EXCHANGE_TABLE", Kind::Text, "cdr"},
    {"time", "IDS_EXCHANGE_TIME_COLUMN", Kind::Text, "calldate"},
    {"id", "IDS_EXCHANGE_ID_KEYS", Kind::List, "uniqueid, sequence"},
    {"columns", "IDS_EXCHANGE_COLUMNS", Kind::List, ""},
};

constexpr ExchangeTransport kTransports[] = {
    {"serial", "IDS_EXCHANGE_SERIAL", kSerial},
    {"listen", "IDS_EXCHANGE_LISTEN", kListen},
    {"connect", "IDS_EXCHANGE_CONNECT", kConnectFields},
    {"mitel5000", "IDS_EXCHANGE_MITEL5000", kMitel5000},
    {"udp", "IDS_EXCHANGE_UDP", kListen},
    {"file", "IDS_EXCHANGE_FOLLOW", kFile},
    {"folder", "IDS_EXCHANGE_WATCH", kFolder},
    {"ami", "IDS_EXCHANGE_AMI", kManager},
    {"http", "IDS_EXCHANGE_HTTP", kHttp},
    {"get", "IDS_EXCHANGE_GET", kGet},
    {"sql", "IDS_EXCHANGE_SQL", kSql},
};

constexpr ExchangeField kReading[] = {
    {"trunks", "IDS_EXCHANGE_TRUNKS", Kind::List, "provider-a, provider-b"},
    {"extensions", "IDS_EXCHANGE_EXTENSIONS", Kind::Text, R"([1-4]\d\d)"},
    {"date_order", "IDS_EXCHANGE_DATE_ORDER", Kind::Choice, "",
     "=IDS_EXCHANGE_OF_FORMAT,dmy=IDS_EXCHANGE_DMY,mdy=IDS_EXCHANGE_MDY"},
    {"time", "IDS_EXCHANGE_TIME", Kind::Choice, "",
     "=IDS_EXCHANGE_OF_FORMAT,start=IDS_EXCHANGE_TIME_START,end=IDS_EXCHANGE_TIME_END"},
    {"strip_access", "IDS_EXCHANGE_STRIP", Kind::List, "0, 9"},
    {"zone", "IDS_EXCHANGE_ZONE", Kind::Text, "Europe/Bucharest"},
    {"internal", "IDS_EXCHANGE_INTERNAL", Kind::Choice, "",
     "drop=IDS_EXCHANGE_INTERNAL_DROP,keep=IDS_EXCHANGE_INTERNAL_KEEP"},
};

constexpr ExchangeField kQuiet[] = {
    {"minutes", "IDS_EXCHANGE_QUIET", Kind::Number, "120"},
    {"hours", "IDS_EXCHANGE_HOURS", Kind::Text, "mon-fri 08:00-18:00"},
    {"mail", "IDS_EMAIL", Kind::Text, "it@example.org"},
};

const QString kOfAnotherForm = "...";

QStringList wordsOf(const QString& text, QChar separator) {
  QStringList words;
  for (const QString& word : text.split(separator, Qt::SkipEmptyParts)) words << word.trimmed();
  words.removeAll({});
  return words;
}

// What is sent ends with a line end as a rule, which the page does not show. A backslash at the end stands for none.
QString shownSend(QString text) {
  const bool usual = text.endsWith("\r\n");
  if (usual) text.chop(2);
  text.replace('\r', "\\r").replace('\n', "\\n");
  return usual || text.isEmpty() ? text : text + '\\';
}

QString sendOf(QString text) {
  if (text.isEmpty()) return text;
  const bool usual = !text.endsWith('\\');
  if (!usual) text.chop(1);
  text.replace("\\r", "\r").replace("\\n", "\n");
  return usual ? text + "\r\n" : text;
}

QString stepsText(const QJsonArray& steps) {
  QStringList lines;
  for (const QJsonValue& step : steps) {
    lines << step["expect"].toString() + " | " + shownSend(step["send"].toString());
  }
  return lines.join('\n');
}

QJsonArray stepsOf(const QString& text) {
  QJsonArray steps;
  for (const QString& line : wordsOf(text, '\n')) {
    steps.append(
        QJsonObject{{"expect", line.section('|', 0, 0).trimmed()}, {"send", sendOf(line.section('|', 1).trimmed())}});
  }
  return steps;
}

QString textOf(const QJsonValue& value) {
  if (value.isArray()) {
    QStringList words;
    for (const QJsonValue& each : value.toArray()) words << each.toString();
    return words.join(", ");
  }
  if (value.isObject()) return kOfAnotherForm;
  return value.isDouble() ? QString::number(value.toInteger()) : value.toString();
}

// Undefined when the key is to go. The first choice needs no key, but may have one.
QJsonValue valueOf(const ExchangeField& field, const QWidget& editor, const QJsonValue& before) {
  if (const auto* choice = qobject_cast<const QComboBox*>(&editor)) {
    const QString chosen = choice->currentData().toString();
    return choice->currentIndex() > 0 || (before.isString() && before.toString() == chosen) ? QJsonValue(chosen)
                                                                                            : QJsonValue::Undefined;
  }
  if (const auto* steps = qobject_cast<const QPlainTextEdit*>(&editor)) {
    const QJsonArray all = stepsOf(steps->toPlainText());
    return all.isEmpty() ? QJsonValue(QJsonValue::Undefined) : QJsonValue(all);
  }
  const auto* line = qobject_cast<const QLineEdit*>(&editor);
  const QString text = line == nullptr ? QString() : line->text().trimmed();
  if (text.isEmpty()) return QJsonValue::Undefined;
  if (field.kind == Kind::List) return QJsonArray::fromStringList(wordsOf(text, ','));
  bool isNumber = false;
  const qlonglong number = text.toLongLong(&isNumber);
  // What is no number is refused with a clear message when the file is checked.
  return field.kind == Kind::Number && isNumber ? QJsonValue(number) : QJsonValue(text);
}

}  // namespace

std::span<const ExchangeTransport> exchangeTransports() {
  return kTransports;
}

std::span<const ExchangeField> readingFields() {
  return kReading;
}

std::span<const ExchangeField> quietFields() {
  return kQuiet;
}

FieldForm::FieldForm(std::span<const ExchangeField> fields, const Texts& texts) : form_(new QFormLayout(this)) {
  form_->setContentsMargins(0, 0, 0, 0);
  form_->setFieldGrowthPolicy(QFormLayout::ExpandingFieldsGrow);
  for (const ExchangeField& field : fields) {
    QWidget* editor = makeEditor(field, texts);
    editor->setObjectName(QString("exchange_%1").arg(field.key));
    auto* label = new QLabel(texts(field.captionKey));
    label->setBuddy(editor);
    editor->setAccessibleName(label->text());
    form_->addRow(label, editor);
    rows_.push_back({&field, editor});
  }
}

QWidget* FieldForm::makeEditor(const ExchangeField& field, const Texts& texts) {
  if (field.kind == Kind::Choice) {
    auto* box = new QComboBox;
    for (const QString& choice : QString(field.choices).split(',')) {
      const QString text = choice.section('=', 1);
      const QString value = choice.section('=', 0, 0);
      box->addItem(text.startsWith("IDS_") ? texts(fromQt(text)) : text.isEmpty() ? value : text, value);
    }
    connect(box, &QComboBox::currentIndexChanged, this, &FieldForm::edited);
    return box;
  }
  if (field.kind == Kind::Steps) {
    auto* steps = new QPlainTextEdit;
    steps->setPlaceholderText(field.example);
    steps->setMaximumHeight(fontMetrics().lineSpacing() * 4);
    steps->setTabChangesFocus(true);
    connect(steps, &QPlainTextEdit::textChanged, this, &FieldForm::edited);
    return steps;
  }
  auto* line = new QLineEdit;
  line->setPlaceholderText(field.example);
  if (field.kind == Kind::Secret) line->setEchoMode(QLineEdit::PasswordEchoOnEdit);
  connect(line, &QLineEdit::textChanged, this, &FieldForm::edited);
  return line;
}

void FieldForm::setValues(const QJsonObject& values) {
  for (const Row& row : rows_) {
    const QJsonValue value = values.value(row.field->key);
    if (auto* choice = qobject_cast<QComboBox*>(row.editor)) {
      choice->setCurrentIndex(std::max(0, choice->findData(value.toString())));
    } else if (auto* steps = qobject_cast<QPlainTextEdit*>(row.editor)) {
      steps->setPlainText(stepsText(value.toArray()));
    } else if (auto* line = qobject_cast<QLineEdit*>(row.editor)) {
      line->setText(textOf(value));
      line->setReadOnly(value.isObject());
      line->setCursorPosition(0);
    }
  }
}

QJsonObject FieldForm::values(QJsonObject over) const {
  for (const Row& row : rows_) {
    if (over.value(row.field->key).isObject()) continue;
    const QJsonValue value = valueOf(*row.field, *row.editor, over.value(row.field->key));
    if (value.isUndefined()) {
      over.remove(row.field->key);
    } else {
      over.insert(row.field->key, value);
    }
  }
  return over;
}

void FieldForm::setFieldVisible(const char* key, bool visible) {
  for (const Row& row : rows_) {
    if (QString(row.field->key) == key) form_->setRowVisible(row.editor, visible);
  }
}

}  // namespace ui
