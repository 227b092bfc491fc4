#include "Contract.h"

#include "Endpoints.h"
#include "Json.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMetaType>

using namespace Qt::StringLiterals;

namespace {

/// "LoginRequest", "DashboardResponse.Paquete".
template <Record R>
QString schemaName()
{
    return QString::fromLatin1(QMetaType::fromType<R>().name()).replace(u"::"_s, u"."_s);
}

QString textOf(std::string_view text)
{
    return QString::fromLatin1(text.data(), static_cast<qsizetype>(text.size()));
}

QJsonObject numberSchema() { return {{u"type"_s, u"integer"_s}, {u"format"_s, u"int64"_s}}; }

QJsonObject inJson(const QJsonObject &schema)
{
    return {{u"application/json"_s, QJsonObject{{u"schema"_s, schema}}}};
}

/// Collects the schemas of the records.
class Schemas {
public:
    /// Returns a reference to the record's schema.
    template <Record R>
    QJsonObject reference()
    {
        const QString name = schemaName<R>();
        if (!m_all.contains(name)) {
            m_all.insert(name, QJsonObject());
            m_all.insert(name, recordSchema<R>());
        }
        return {{u"$ref"_s, u"#/components/schemas/"_s + name}};
    }

    QJsonObject all() const { return m_all; }

private:
    template <Record R>
    QJsonObject recordSchema()
    {
        QJsonObject properties;
        QJsonArray required;
        boost::mp11::mp_for_each<Json::Fields<R>>([&](auto field) {
            using Value = std::remove_cvref_t<decltype(std::declval<R>().*field.pointer)>;
            const QString key = textOf(field.name);
            QJsonObject schema = valueSchema(std::type_identity<Value>());
            addLimits<R>(key, schema);
            properties.insert(key, schema);
            if constexpr (!Json::detail::isOptional<Value>)
                required.append(key);
        });
        QJsonObject schema{{u"type"_s, u"object"_s}, {u"properties"_s, properties}};
        // Only requests have required fields, and the app sends nothing else.
        if (!required.isEmpty()) {
            schema.insert(u"required"_s, required);
            schema.insert(u"additionalProperties"_s, false);
        }
        return schema;
    }

    static QJsonObject valueSchema(std::type_identity<QString>) { return {{u"type"_s, u"string"_s}}; }
    static QJsonObject valueSchema(std::type_identity<qint64>) { return numberSchema(); }
    static QJsonObject valueSchema(std::type_identity<double>)
    {
        return {{u"type"_s, u"number"_s}, {u"format"_s, u"double"_s}};
    }
    template <Record R>
    QJsonObject valueSchema(std::type_identity<QList<R>>)
    {
        return {{u"type"_s, u"array"_s}, {u"items"_s, reference<R>()}};
    }
    template <class T>
    QJsonObject valueSchema(std::type_identity<std::optional<T>>)
    {
        QJsonObject schema = valueSchema(std::type_identity<T>());
        schema.insert(u"type"_s, QJsonArray{schema[u"type"_s], u"null"_s});
        return schema;
    }

    /// Adds what the type of a field does not tell.
    template <Record R>
    static void addLimits(const QString &key, QJsonObject &schema)
    {
        if constexpr (std::same_as<R, CotizacionRequest>) {
            if (key == u"tipo"_s)
                schema.insert(u"enum"_s, QJsonArray{CotizacionRequest::aereo.toString(),
                                                    CotizacionRequest::maritimo.toString()});
        }
        if constexpr (std::same_as<R, PerfilRequest>) {
            if (key == u"avatar_base64"_s) {
                schema.insert(u"contentEncoding"_s, u"base64"_s);
                schema.insert(u"maxLength"_s, 4 * ((PerfilRequest::largestPhoto + 2) / 3));
            }
        }
    }

    QJsonObject m_all;
};

template <Record Reply>
QJsonObject responses(Schemas &schemas)
{
    return {{u"200"_s, QJsonObject{{u"description"_s, u"The app reads the body, whatever the HTTP status is."_s},
                                   {u"content"_s, inJson(schemas.reference<Reply>())}}}};
}

template <Record Request, Record Reply>
QJsonObject pathItem(const PostEndpoint<Request, Reply> &, Schemas &schemas)
{
    const QJsonObject body{{u"required"_s, true}, {u"content"_s, inJson(schemas.reference<Request>())}};
    return {{u"post"_s, QJsonObject{{u"requestBody"_s, body}, {u"responses"_s, responses<Reply>(schemas)}}}};
}

template <Record Reply>
QJsonObject pathItem(const GetEndpoint<Reply> &endpoint, Schemas &schemas)
{
    const QJsonObject number{{u"name"_s, QString(endpoint.parameter)},
                             {u"in"_s, u"query"_s},
                             {u"required"_s, true},
                             {u"schema"_s, numberSchema()}};
    return {
        {u"get"_s, QJsonObject{{u"parameters"_s, QJsonArray{number}}, {u"responses"_s, responses<Reply>(schemas)}}}};
}

} // namespace

QByteArray Check::contract(const QString &version, const QString &baseUrl)
{
    Schemas schemas;
    QJsonObject paths;
    std::apply(
        [&](const auto &...endpoint) { (paths.insert(u'/' + endpoint.name, pathItem(endpoint, schemas)), ...); },
        Endpoints::all);
    const QJsonObject info{
        {u"title"_s, u"The service of the Marovenda app"_s},
        {u"version"_s, version},
        {u"description"_s,
         u"What the app sends and how it reads the replies. In replies, a missing key and null mean the "
         "same, and other keys are ignored. The app's documentation contains the rest in "
         "protocol.md."_s}};
    // Paths begin with the slash in which the base address ends.
    const QJsonObject server{{u"url"_s, baseUrl.chopped(1)}};
    const QJsonObject whole{{u"openapi"_s, u"3.1.0"_s},
                            {u"info"_s, info},
                            {u"servers"_s, QJsonArray{server}},
                            {u"paths"_s, paths},
                            {u"components"_s, QJsonObject{{u"schemas"_s, schemas.all()}}}};
    return QJsonDocument(whole).toJson();
}
