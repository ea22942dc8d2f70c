<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de" sourcelanguage="en">
<context>
    <name>AttentionView</name>
    <message>
        <source>Do not disturb until %1</source>
        <translation>Nicht stören bis %1</translation>
    </message>
    <message>
        <source>Do not disturb</source>
        <translation>Nicht stören</translation>
    </message>
    <message>
        <source>History</source>
        <translation>Verlauf</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Schließen</translation>
    </message>
    <message>
        <source>All</source>
        <comment>notifications of the past</comment>
        <translation>Alle</translation>
    </message>
    <message>
        <source>Missed: %1</source>
        <comment>how many notifications</comment>
        <translation>Verpasst: %1</translation>
    </message>
    <message>
        <source>Missed</source>
        <comment>notifications</comment>
        <translation>Verpasst</translation>
    </message>
    <message>
        <source>The history can&apos;t be read: %1</source>
        <translation>Der Verlauf kann nicht gelesen werden: %1</translation>
    </message>
    <message>
        <source>Nothing was missed.</source>
        <translation>Nichts verpasst.</translation>
    </message>
    <message>
        <source>Nothing has come yet.</source>
        <translation>Noch ist nichts gekommen.</translation>
    </message>
</context>
<context>
    <name>DemoMessages</name>
    <message>
        <source>Parcel</source>
        <translation>Paket</translation>
    </message>
    <message>
        <source>At the front door.</source>
        <translation>Vor der Haustür.</translation>
    </message>
    <message>
        <source>Post</source>
        <translation>Post</translation>
    </message>
    <message>
        <source>Updates</source>
        <translation>Aktualisierungen</translation>
    </message>
    <message>
        <source>System</source>
        <translation>System</translation>
    </message>
    <message>
        <source>The window is open</source>
        <translation>Das Fenster ist offen</translation>
    </message>
    <message>
        <source>It will rain in ten minutes. The heating is off.</source>
        <translation>In zehn Minuten regnet es. Die Heizung ist aus.</translation>
    </message>
    <message>
        <source>It will &lt;b&gt;rain&lt;/b&gt; in &lt;i&gt;ten minutes&lt;/i&gt;. The heating is &lt;u&gt;off&lt;/u&gt;.</source>
        <translation>In &lt;i&gt;zehn Minuten&lt;/i&gt; &lt;b&gt;regnet&lt;/b&gt; es. Die Heizung ist &lt;u&gt;aus&lt;/u&gt;.</translation>
    </message>
    <message>
        <source>House</source>
        <translation>Haus</translation>
    </message>
    <message>
        <source>Somebody rings</source>
        <translation>Es klingelt</translation>
    </message>
    <message>
        <source>At the garden gate, for the second time.</source>
        <translation>Am Gartentor, zum zweiten Mal.</translation>
    </message>
    <message>
        <source>Doorbell</source>
        <translation>Türklingel</translation>
    </message>
    <message>
        <source>Open</source>
        <translation>Öffnen</translation>
    </message>
    <message>
        <source>In a moment</source>
        <translation>Gleich</translation>
    </message>
</context>
<context>
    <name>HistoryModel</name>
    <message>
        <source>No text was kept</source>
        <translation>Kein Text aufbewahrt</translation>
    </message>
    <message>
        <source>open</source>
        <comment>a notification</comment>
        <translation>offen</translation>
    </message>
    <message>
        <source>seen</source>
        <comment>a notification</comment>
        <translation>gesehen</translation>
    </message>
    <message>
        <source>closed</source>
        <comment>a notification</comment>
        <translation>geschlossen</translation>
    </message>
    <message>
        <source>acted on</source>
        <comment>a notification</comment>
        <translation>bearbeitet</translation>
    </message>
    <message>
        <source>missed</source>
        <comment>a notification</comment>
        <translation>verpasst</translation>
    </message>
    <message>
        <source>missed, do not disturb</source>
        <comment>a notification</comment>
        <translation>verpasst, nicht stören</translation>
    </message>
    <message>
        <source>not shown</source>
        <comment>a notification</comment>
        <translation>nicht gezeigt</translation>
    </message>
</context>
<context>
    <name>Look</name>
    <message>
        <source>Close</source>
        <translation>Schließen</translation>
    </message>
    <message>
        <source>Progress</source>
        <translation>Fortschritt</translation>
    </message>
    <message>
        <source>%1 s</source>
        <comment>seconds that are left</comment>
        <translation>%1 s</translation>
    </message>
    <message>
        <source>%1 more</source>
        <comment>how many messages wait</comment>
        <translation>%1 weitere</translation>
    </message>
    <message>
        <source>%1 min</source>
        <comment>minutes that are left</comment>
        <translation>%1 min</translation>
    </message>
    <message>
        <source>Urgent</source>
        <translation>Dringend</translation>
    </message>
    <message>
        <source>Important</source>
        <translation>Wichtig</translation>
    </message>
    <message>
        <source>For %1</source>
        <comment>how long a message stays, such as 5 s</comment>
        <translation>Für %1</translation>
    </message>
</context>
<context>
    <name>MessageWindow</name>
    <message>
        <source>The theme is broken: %1</source>
        <translation>Das Design ist fehlerhaft: %1</translation>
    </message>
</context>
<context>
    <name>Messages</name>
    <message>
        <source>Message</source>
        <translation>Nachricht</translation>
    </message>
    <message>
        <source>%1 messages</source>
        <translation>%1 Nachrichten</translation>
    </message>
    <message>
        <source>%1 messages of %2</source>
        <translation>%1 Nachrichten von %2</translation>
    </message>
    <message>
        <source>and %1 older ones</source>
        <translation>und %1 ältere</translation>
    </message>
    <message>
        <source>While you were not to be disturbed</source>
        <translation>Während nicht gestört werden sollte</translation>
    </message>
    <message>
        <source>%1 more</source>
        <translation>%1 weitere</translation>
    </message>
    <message>
        <source>%1 more of %2</source>
        <translation>%1 weitere von %2</translation>
    </message>
    <message>
        <source>They came too fast to be shown.</source>
        <translation>Sie kamen zu schnell, um gezeigt zu werden.</translation>
    </message>
</context>
</TS>
